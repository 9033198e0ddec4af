#include "review/review_rig.h"

#include <QFileInfo>
#include <cmath>
#include <numbers>

#include "fakes/files.h"

namespace zel::test {

std::vector<Sample> samples_of(const char* states) {
    std::vector<Sample> samples;
    for (int i = 0; states[i]; ++i) {
        const char s = states[i];
        if (s == '-') continue;
        samples.push_back({0.02 * (i + 1), samples.size() / 100.0, s == '0' ? 4 : 1, s != '2'});
    }
    return samples;
}

std::vector<Sample> breathing_with_holds(int holds, double peak) {
    std::vector<Sample> samples;
    for (int i = 0; i < (holds + 1) * 500; ++i) {
        const double t = 0.02 * (i + 1);
        const bool holding = i % 500 >= 250 && i % 500 < 350 && i / 500 < holds;
        const double v = holding ? peak : peak / 2 * (1 - std::cos(2 * std::numbers::pi * t / 4));
        samples.push_back({t, v, holding ? 4 : 1, 1});
    }
    return samples;
}

QByteArray curve_text(const std::vector<Sample>& samples, double rate) {
    QByteArray text = "CURVE_DATA_FILE_STAMP\r\nHeaderStart\r\nThreshold:1.2\r\nCount Frequency: " +
                      QByteArray::number(rate) + " \r\nSession:1\r\nHeaderEnd\r\n";
    for (const Sample& s : samples)
        text += QByteArray::number(s.session_time) + ";" + QByteArray::number(s.volume) + ";" +
                QByteArray::number(s.balloon) + ";" + QByteArray::number(s.patient_switch) +
                "; - ; - ; - \r\n";
    return text;
}

ReviewRig::ReviewRig() { window.Form_Load(); }

QString ReviewRig::write_curve(const QString& name, const std::vector<Sample>& samples,
                               double rate) {
    return write_text(name, curve_text(samples, rate));
}

QString ReviewRig::write_text(const QString& name, const QByteArray& text) {
    return write(folder.filePath(name), text);
}

// What the dialog returns: one file as a whole path, several as their folder and their names.
static QStringList parts(const QStringList& paths) {
    if (paths.size() <= 1) return paths;
    QStringList result{QFileInfo(paths.front()).absolutePath()};
    for (const QString& p : paths) result.append(QFileInfo(p).fileName());
    return result;
}

void ReviewRig::open_on(const QStringList& paths) {
    window.Form_Unload();
    dialogs.choose_files(parts(paths));
    window.Form_Load();
}

void ReviewRig::import(const QStringList& paths) {
    dialogs.choose_files(parts(paths));
    window.mnuOpenPatientFfiles_Click();
}

}  // namespace zel::test
