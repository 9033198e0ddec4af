#pragma once
// The review window over fake dialogs, and curve files written to a temporary folder.
#include <QTemporaryDir>
#include <vector>

#include "fakes/fake_file_dialogs.h"
#include "fakes/fake_platform.h"
#include "review/patient_curves.h"

namespace zel::test {

struct Sample {
    double session_time, volume;
    int balloon, patient_switch;
};

// Samples 0.02 s apart from 0.02 s, each with the balloon and switch given per sample by
// `states`: '1' free breathing, '0' breath hold, '2' switch off, '-' a lost frame (no sample);
// volume = index / 100.
std::vector<Sample> samples_of(const char* states);

// Free breathing with `holds` breath holds of 2 s, one every 10 s, at 50 samples a second.
std::vector<Sample> breathing_with_holds(int holds, double peak = 1.0);

// A curve file as the console records it, with a threshold of 1.2 L.
QByteArray curve_text(const std::vector<Sample>& samples, double rate = 50);

struct ReviewRig {
    ReviewRig();
    QTemporaryDir folder;
    FakeFileDialogs dialogs;
    FakeMessageBoxes boxes;
    FakeLocale locale;
    PatientCurves window{ReviewPlatform{dialogs, boxes, locale}, folder.path()};

    // Writes a curve file and returns its path.
    QString write_curve(const QString& name, const std::vector<Sample>& samples, double rate = 50);
    QString write_text(const QString& name, const QByteArray& text);
    // Opens the window on these files, as chosen in its file dialog.
    void open_on(const QStringList& paths);
    // Imports more files through the menu.
    void import(const QStringList& paths);
};

}  // namespace zel::test
