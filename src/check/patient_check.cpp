#include "check/patient_check.h"

#include <QDir>
#include <algorithm>
#include <atomic>
#include <thread>

#include "app/zel_error.h"
#include "data/curve_file_reader.h"
#include "data/patient_file.h"
#include "data/profile_file.h"
#include "data/session_history_file.h"
#include "language/messages.h"

namespace zel {

namespace {

QString failure_text(const ZelError& e) {
    return e.description + QStringLiteral(" (") + QString::number(e.number) + QLatin1Char(')');
}

void check_patient_file(const QString& zel_path, const CheckSettings& settings,
                        PatientCheck& check) {
    try {
        const PatientFileReading reading =
            read_patient_file(zel_path, settings.patient_parameter_filestamp,
                              settings.software_version, settings.number_format);
        switch (reading.verdict) {
            case PatientFileVerdict::accepted:
                check.verdict = LoadVerdict::loads;
                break;
            case PatientFileVerdict::corrupt:
                check.verdict = reading.companion_missing ? LoadVerdict::quarantined_companion
                                                          : LoadVerdict::quarantined_crc;
                break;
            case PatientFileVerdict::wrong_version:
                check.verdict = LoadVerdict::quarantined_release;
                check.reason = reading.found_version;
                break;
            case PatientFileVerdict::number_format_differs:
                check.verdict = LoadVerdict::refused_number_format;
                check.reason = QStringLiteral("file %1, this machine %2")
                                   .arg(reading.found_number_format, settings.number_format);
                break;
            case PatientFileVerdict::not_a_patient_file:
                check.verdict = LoadVerdict::refused_not_a_patient;
                break;
        }
    } catch (const ZelError& e) {
        check.verdict = LoadVerdict::unreadable;
        check.reason = failure_text(e);
    }
}

// The count as the session dialog and the history list take it, and each section it names
// read through the same index: a section without its ID is what makes the session dialog
// report that it can't read the history.
void check_session_history(const QString& folder, PatientCheck& check) {
    const QString path = folder + QStringLiteral("/session.ini");
    int16_t total = 0;
    try {
        total = read_total_sessions(path);
    } catch (const ZelError& e) {
        check.history_fault = QStringLiteral("TOTAL_SESSIONS does not read: ") + failure_text(e);
        return;
    }
    check.sessions = total;
    if (total <= 0) return;
    const ProfileIndex history(read_profile_file(path));
    QStringList missing;
    for (int n = 1; n <= total; ++n)
        if (session_id(history, n).isEmpty()) missing.append(QString::number(n));
    if (!missing.isEmpty())
        check.history_fault =
            QStringLiteral("no ID for session %1: ").arg(missing.join(u',')) + message_text(102);
}

void check_curves(const QString& folder, QChar separator, PatientCheck& check) {
    const QDir dir(folder);
    for (const QString& name :
         dir.entryList({QStringLiteral("*.dat")}, QDir::Files, QDir::Name | QDir::IgnoreCase)) {
        try {
            CurveData curve;
            LoadCurveData2(dir.filePath(name), curve, separator);
            ++check.curves_readable;
        } catch (const ZelError& e) {
            check.bad_curves.push_back({name, failure_text(e)});
        }
    }
}

QString verdict_text(LoadVerdict verdict) {
    switch (verdict) {
        case LoadVerdict::loads:
            return QStringLiteral("loads");
        case LoadVerdict::quarantined_crc:
            return QStringLiteral("would be quarantined: CRC differs");
        case LoadVerdict::quarantined_companion:
            return QStringLiteral("would be quarantined: missing companion");
        case LoadVerdict::quarantined_release:
            return QStringLiteral("would be quarantined: other release");
        case LoadVerdict::refused_number_format:
            return QStringLiteral("refused: number format");
        case LoadVerdict::refused_not_a_patient:
            return QStringLiteral("refused: not a patient file");
        case LoadVerdict::unreadable:
            return QStringLiteral("unreadable");
    }
    return {};
}

bool quarantined(LoadVerdict verdict) {
    return verdict == LoadVerdict::quarantined_crc ||
           verdict == LoadVerdict::quarantined_companion ||
           verdict == LoadVerdict::quarantined_release;
}

}  // namespace

PatientCheck check_patient_folder(const QString& folder, const CheckSettings& settings) {
    PatientCheck check;
    check.folder = QDir(folder).dirName();
    const QDir dir(folder);
    const QStringList patient_files =
        dir.entryList({QStringLiteral("*.zel")}, QDir::Files, QDir::Name | QDir::IgnoreCase);
    if (patient_files.isEmpty()) {
        check.verdict = LoadVerdict::refused_not_a_patient;
        check.reason = QStringLiteral("no .zel file");
    } else {
        check_patient_file(dir.filePath(patient_files.front()), settings, check);
    }
    check_session_history(folder, check);
    check_curves(folder, settings.separator, check);
    return check;
}

std::vector<PatientCheck> check_patient_folders(const QString& data_directory,
                                                const QString& quarantine_name,
                                                const CheckSettings& settings, int threads) {
    const QDir root(data_directory);
    QStringList folders =
        root.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name | QDir::IgnoreCase);
    folders.removeAll(quarantine_name);
    std::vector<PatientCheck> checks(static_cast<size_t>(folders.size()));
    // The folders are independent and the readers keep no state between files, so each
    // thread takes the next folder until none is left.
    std::atomic<size_t> next{0};
    const auto work = [&] {
        for (size_t k; (k = next++) < checks.size();)
            checks[k] =
                check_patient_folder(root.filePath(folders[static_cast<qsizetype>(k)]), settings);
    };
    std::vector<std::thread> pool;
    for (int t = 1; t < std::max(threads, 1); ++t) pool.emplace_back(work);
    work();
    for (std::thread& thread : pool) thread.join();
    return checks;
}

QStringList patient_check_lines(const PatientCheck& check) {
    QString line = check.folder + QStringLiteral(": ") + verdict_text(check.verdict);
    if (!check.reason.isEmpty()) line += QStringLiteral(" (") + check.reason + QLatin1Char(')');
    line += QStringLiteral("; sessions: ") + QString::number(check.sessions);
    QStringList lines{line};
    if (!check.history_fault.isEmpty())
        lines.append(QStringLiteral("  session.ini: ") + check.history_fault);
    for (const CurveFault& curve : check.bad_curves)
        lines.append(QStringLiteral("  ") + curve.file + QStringLiteral(": would not load: ") +
                     curve.reason);
    return lines;
}

QString check_summary(const std::vector<PatientCheck>& checks) {
    int load = 0, quarantine = 0, refused = 0, unreadable = 0, histories = 0, readable = 0, bad = 0;
    for (const PatientCheck& check : checks) {
        if (check.verdict == LoadVerdict::loads)
            ++load;
        else if (quarantined(check.verdict))
            ++quarantine;
        else if (check.verdict == LoadVerdict::unreadable)
            ++unreadable;
        else
            ++refused;
        if (!check.history_fault.isEmpty()) ++histories;
        readable += check.curves_readable;
        bad += static_cast<int>(check.bad_curves.size());
    }
    return QStringLiteral(
               "patients: %1 load, %2 would be quarantined, %3 refused, %4 unreadable; session "
               "histories: %5 unreadable; curves: %6 readable, %7 not")
        .arg(load)
        .arg(quarantine)
        .arg(refused)
        .arg(unreadable)
        .arg(histories)
        .arg(readable)
        .arg(bad);
}

// A history the session dialog can't read is as much a problem as a curve that won't load: a
// service script that trusts the status must not pass it.
bool all_load(const std::vector<PatientCheck>& checks) {
    return std::all_of(checks.begin(), checks.end(), [](const PatientCheck& check) {
        return check.verdict == LoadVerdict::loads && check.bad_curves.empty() &&
               check.history_fault.isEmpty();
    });
}

}  // namespace zel
