#pragma once
// The console's own save code over fake platform parts, in a folder of its own, with version k
// of every file it keeps: what the program under the crash test writes, and what the test
// expects to find after each kill.
#include <QByteArray>
#include <QString>
#include <map>

#include "app/form1.h"
#include "fakes/fake_platform.h"

namespace zel::test::crash {

// Curve lines written between two versions of the other files.
constexpr long lines_per_version = 4;

// ROOT/app (zel.ini), ROOT/patients (the data directory) and the one patient's folder in it.
struct CrashFolder {
    explicit CrashFolder(const QString& root);
    QString app_data;
    QString data_directory;
    QString patient_folder;
    QString patient_file;    // ".zel"
    QString companion_file;  // ".sfv"
    QString settings_file;   // "zel.ini"
    QString session_file;    // "session.ini"
    QString quarantine;      // where a corrupt patient goes
    // Two folders that hand a patient of another release, "Move_Out_M1", to and fro: the
    // quarantine of each is a link to the other. The second is a link itself, to a folder on
    // this file system or on another one, where the move is a copy.
    QString site_a, site_b;
    // The curve file of one run of the program: its session is named after the run.
    QString curve_file(long run) const;
};

QString run_session(long run);

struct CrashConsole {
    explicit CrashConsole(const QString& root);
    // The values that version k saves: the hold's length (patient file, zel.ini, session
    // history), the count of holds and the moment (session history).
    void set_version(long version);
    // Version k of the session history's one entry, saved again in its place.
    bool save_session_entry();
    // What a run's curve header holds: its session, and the first version's values.
    void start_recording_values(long run, long first_version);
    // The state of line i of a recording: its count and volume.
    void set_line(long line);

    CrashFolder folder;
    FakePlatform fakes;
    Form1 form;
};

// What the console writes for version k, and for a recording's header and line i; each made
// by the console's own code in a scratch folder.
class Expected {
public:
    Expected();
    // One of the files replaced whole (patient, companion, settings or session file).
    QByteArray whole_file(long version, QString CrashFolder::*file);
    QByteArray curve_header(long run, long first_version);
    QByteArray curve_line(long line);

private:
    // Each version made once: the checks ask for the same few again and again.
    std::map<std::pair<QString, long>, QByteArray> made;
    QString scratch_root;
    CrashConsole scratch;
};

}  // namespace zel::test::crash
