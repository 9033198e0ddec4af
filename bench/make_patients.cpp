// Writes a site's worth of patient folders with the console's own writers, for timing
// `zelmoor --check` on them:
//   zel_make_patients DIR [PATIENTS] [CURVES] [SECONDS]
// PATIENTS folders (1000 if not given), each with its patient file and companion, a history
// of CURVES sessions and CURVES curve files (20) of SECONDS of breathing each (60). The
// curves are recorded once by the recording code from data frames and copied into every
// folder under the patient's own names. One patient with 30 sessions of 30 minutes, for
// timing `zelmoor --stats` on a patient's folder: zel_make_patients DIR 1 30 1800.
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>

#include "app/release.h"
#include "data/patient_file.h"
#include "data/session_history_file.h"
#include "language/messages.h"
#include "recorded_curves.h"

namespace {

using namespace zel;
using zel::test::record_curve;
using zel::test::Recording;

// One session's curve of `seconds`, recorded by the console's recording code.
QByteArray record_session(const QString& folder, int number, int seconds) {
    const Recording recording{QStringLiteral("Rec"), QStringLiteral("Bench"),
                              QString::number(number), QString::number(number), number, seconds,
                              3.6 + 0.1 * number};
    QFile file(record_curve(folder, recording));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool write_patient(const QString& root, int n, const std::vector<QByteArray>& curves) {
    PatientParameters p;
    p.last_name = QStringLiteral("Patient%1").arg(n, 4, 10, QLatin1Char('0'));
    p.first_name = QStringLiteral("Site");
    p.medical_id = QStringLiteral("M%1").arg(n);
    p.thresh = 1.2f;
    p.duration = 15;
    p.max_y = 2.5;
    p.max_x = 1000;
    p.gated = n % 2 == 0;
    const QString folder = patient_folder(root, p.last_name, p.first_name, p.medical_id);
    if (!QDir().mkpath(folder)) return false;
    const QStringList lines = patient_file_lines(
        QString::fromLatin1(release::patient_parameter_filestamp), release::software_version(), p,
        QStringLiteral("22-Nov-26"), QStringLiteral("dot"), QLatin1Char('.'));
    if (!write_patient_files(patient_file_path(root, p.last_name, p.first_name, p.medical_id),
                             lines))
        return false;
    // The history holds every session at once: written in one profile file.
    QByteArray history;
    for (size_t k = 1; k <= curves.size(); ++k) {
        const QString section = session_section(static_cast<int>(k));
        const std::pair<const char*, QString> values[] = {
            {"ID", QStringLiteral(" %1").arg(k)},
            {"Date", QStringLiteral("22-Nov-26 at 09:05:07")},
            {"Threshold", QStringLiteral("1.2")},
            {"Breath_Hold_Duration", QStringLiteral(" 15")},
            {"Trigger_on_Inhale", QStringLiteral("Inhale")},
            {"Number_of_breath_holds", QStringLiteral(" 12")},
            {"Gating Mode", QStringLiteral("Manual")}};
        for (const auto& [key, value] : values) {
            const QString name = QString::fromLatin1(key);
            if (!edit_profile(history, section, &name, &value)) return false;
        }
    }
    const QString total_key = QStringLiteral("TOTAL_SESSIONS");
    const QString total = QStringLiteral(" %1").arg(curves.size());
    if (!edit_profile(history, QStringLiteral("HEADER"), &total_key, &total)) return false;
    QFile session(folder + QStringLiteral("/session.ini"));
    if (!session.open(QIODevice::WriteOnly) || session.write(history) != history.size())
        return false;
    for (size_t k = 0; k < curves.size(); ++k) {
        QFile curve(folder + QStringLiteral("/%1_%2.dat").arg(p.last_name).arg(k + 1));
        if (!curve.open(QIODevice::WriteOnly) || curve.write(curves[k]) != curves[k].size())
            return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: zel_make_patients DIR [PATIENTS] [CURVES] [SECONDS]\n");
        return 2;
    }
    const QString root = QString::fromLocal8Bit(argv[1]);
    const int patients = argc > 2 ? std::atoi(argv[2]) : 1000;
    const int curve_count = argc > 3 ? std::atoi(argv[3]) : 20;
    const int seconds = argc > 4 ? std::atoi(argv[4]) : 60;
    if (patients < 1 || curve_count < 0 || seconds < 1 || !QDir().mkpath(root)) {
        std::fprintf(stderr, "zel_make_patients: can not write to %s\n", argv[1]);
        return 2;
    }
    load_default_messages();
    QTemporaryDir recordings;
    std::vector<QByteArray> curves;
    for (int k = 1; k <= curve_count; ++k) {
        curves.push_back(record_session(recordings.path(), k, seconds));
        if (curves.back().isEmpty()) {
            std::fprintf(stderr, "zel_make_patients: a recording failed\n");
            return 1;
        }
    }
    for (int n = 1; n <= patients; ++n) {
        if (!write_patient(root, n, curves)) {
            std::fprintf(stderr, "zel_make_patients: patient %d could not be written\n", n);
            return 1;
        }
    }
    std::printf("%d patients with %d curves of %d s each in %s\n", patients, curve_count, seconds,
                argv[1]);
    return 0;
}
