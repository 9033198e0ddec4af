#pragma once
// The check of a site's patient folders before they are used on this console: every folder
// read as a load reads it, every session history and curve file as the session dialog and
// the review read them, and nothing changed (no quarantine, no file written, no attribute).
#include <QChar>
#include <QString>
#include <QStringList>
#include <vector>

namespace zel {

// What a load on this machine tests against.
struct CheckSettings {
    QString patient_parameter_filestamp;
    QString software_version;
    QString number_format;  // "dot" or "comma", of this machine
    QChar separator;        // this machine's decimal separator
};

// What a load of the folder's patient file would do.
enum class LoadVerdict {
    loads,
    quarantined_crc,        // would be quarantined: the CRC differs
    quarantined_companion,  // would be quarantined: no companion
    quarantined_release,    // would be quarantined: written by another release
    refused_number_format,  // refused: the file's number format is not this machine's
    refused_not_a_patient,  // refused: line 1 is not the stamp, or no ".zel" at all
    unreadable,             // the load would fail with "Error opening file."
};

struct CurveFault {
    QString file;    // name within the folder
    QString reason;  // the reader's own words and number
};

struct PatientCheck {
    QString folder;  // name under the checked folder
    LoadVerdict verdict = LoadVerdict::unreadable;
    QString reason;  // what the verdict rests on, for the operator
    int sessions = 0;
    QString history_fault;  // what the session dialog would report, empty when nothing
    int curves_readable = 0;
    std::vector<CurveFault> bad_curves;
};

// One patient folder, as a load of its first ".zel" (by name, as the medical ID scan takes
// it), its "session.ini" and every ".dat" in it.
PatientCheck check_patient_folder(const QString& folder, const CheckSettings& settings);

// Every folder under `data_directory` but the quarantine folder (`quarantine_name`), in
// order of name, read on `threads` threads.
std::vector<PatientCheck> check_patient_folders(const QString& data_directory,
                                                const QString& quarantine_name,
                                                const CheckSettings& settings, int threads);

// The lines printed for one patient: its verdict with the sessions counted, then one line
// for a history the dialog can't read and one for each curve that would not load.
QStringList patient_check_lines(const PatientCheck& check);
// "patients: N load, Q would be quarantined, R refused, U unreadable; session histories: H
// unreadable; curves: C readable, B not".
QString check_summary(const std::vector<PatientCheck>& checks);
// True when every patient loads, every session history and every curve reads.
bool all_load(const std::vector<PatientCheck>& checks);

}  // namespace zel
