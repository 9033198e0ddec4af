#include "recorded_curves.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cmath>
#include <numbers>

#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

constexpr int samples_per_curve = 90000;  // 30 minutes at 50 frames a second

// Records one curve file into its patient's folder under `folder` and returns its path.
QString record_curve(const QString& folder, int number) {
    Rig rig;
    rig.form.data_directory = folder;
    rig.form.patient_last_name = QStringLiteral("Curve%1").arg(number);
    rig.form.patient_first_name = QStringLiteral("Bench");
    rig.form.patient_medical_id = QStringLiteral("B%1").arg(number);
    rig.form.session = QStringLiteral("1");
    rig.form.thresh = 1.4f;
    rig.form.patient_defined = true;
    rig.form.cmdRecord.Enabled = true;
    const QString patient = folder + QStringLiteral("/Curve%1_Bench_B%1").arg(number);
    QDir().mkpath(patient);
    rig.form.cmdRecord_Click();
    const double period = 3.6 + 0.3 * number;
    for (int i = 0; i < samples_per_curve; ++i) {
        const double t = i / 50.0;
        const bool holding = std::fmod(t, 60.0) >= 30.0 && std::fmod(t, 60.0) < 50.0;
        const double litres = holding ? 1.55 : 1.0 + 0.8 * std::sin(2 * std::numbers::pi * t / period);
        rig.fakes.serial.receive(data_frame(0x06, holding ? 4 : 1,
                                            static_cast<int16_t>(std::lround(litres / 0.004))));
    }
    rig.form.cmdPause_Click();
    const QStringList files = QDir(patient).entryList({QStringLiteral("*.dat")}, QDir::Files);
    return files.isEmpty() ? QString() : patient + QLatin1Char('/') + files.front();
}

}  // namespace

QStringList record_review_curves(const QString& folder, int count) {
    // The header's title line is a message of the catalogue: without it every file would be
    // one that the review refuses.
    load_default_messages();
    QTemporaryDir patients;
    QStringList paths;
    for (int n = 1; n <= count; ++n) {
        const QString recorded = record_curve(patients.path(), n);
        const QString target = folder + QStringLiteral("/Curve%1.dat").arg(n);
        QFile::remove(target);
        if (recorded.isEmpty() || !QFile::copy(recorded, target)) return {};
        paths.append(target);
    }
    return paths;
}

}  // namespace zel::test
