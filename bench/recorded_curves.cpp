#include "recorded_curves.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cmath>
#include <numbers>

#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {

QString record_curve(const QString& folder, const Recording& r) {
    // The header's title line is a message of the catalogue: without it every file would be
    // one that the review refuses.
    load_default_messages();
    Rig rig;
    rig.form.data_directory = folder;
    rig.form.patient_last_name = r.last_name;
    rig.form.patient_first_name = r.first_name;
    rig.form.patient_medical_id = r.medical_id;
    rig.form.session = r.session;
    rig.form.thresh = 1.4f;
    rig.form.patient_defined = true;
    rig.form.cmdRecord.Enabled = true;
    const QString patient = folder + QLatin1Char('/') + r.last_name + QLatin1Char('_') +
                            r.first_name + QLatin1Char('_') + r.medical_id;
    QDir().mkpath(patient);
    rig.form.cmdRecord_Click();
    // Each patient or session holds at a level of its own.
    const double level = 1.55 + 0.04 * std::sin(1.3 * r.number);
    for (int i = 0; i < r.seconds * 50; ++i) {
        const double t = i / 50.0;
        const double in_minute = std::fmod(t, 60.0);
        const bool holding = in_minute >= 30.0 && in_minute < 50.0;
        const double hold = std::floor(t / 60.0);
        const double litres =
            holding ? level + 0.015 * std::sin(2.1 * hold + r.number) - 0.003 * (in_minute - 30.0)
                    : 1.0 + 0.8 * std::sin(2 * std::numbers::pi * t / r.period);
        rig.fakes.serial.receive(
            data_frame(0x06, holding ? 4 : 1, static_cast<int16_t>(std::lround(litres / 0.004))));
    }
    rig.form.cmdPause_Click();
    return QFile::exists(rig.form.record_filename) ? rig.form.record_filename : QString();
}

QStringList record_review_curves(const QString& folder, int count) {
    QTemporaryDir patients;
    QStringList paths;
    for (int n = 1; n <= count; ++n) {
        const Recording recording{QStringLiteral("Curve%1").arg(n),
                                  QStringLiteral("Bench"),
                                  QStringLiteral("B%1").arg(n),
                                  QStringLiteral("1"),
                                  n,
                                  1800,
                                  3.6 + 0.3 * n};
        const QString recorded = record_curve(patients.path(), recording);
        const QString target = folder + QStringLiteral("/Curve%1.dat").arg(n);
        QFile::remove(target);
        if (recorded.isEmpty() || !QFile::copy(recorded, target)) return {};
        paths.append(target);
    }
    return paths;
}

}  // namespace zel::test
