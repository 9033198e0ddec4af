// zelmoor --check, run as the installed program is run, on patient folders written by the
// console's own writers: the lines, the exit status, and every file left as it was.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <map>

#include "app/release.h"
#include "data/patient_file.h"
#include "data/session_history_file.h"
#include "fakes/files.h"
#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

PatientParameters patient(const char* last, const char* id) {
    return {last, "Ann", id, 1.2f, 12, 2.5, true, 1, 1000, false};
}

// Writes the patient's files as the console saves them and returns its ".zel" path. `edit`
// changes the lines before they are written, so that the CRC still matches them.
QString write_patient(const QString& root, const PatientParameters& p,
                      const QString& version = release::software_version(),
                      const QString& number_format = QStringLiteral("dot"),
                      const std::function<void(QStringList&)>& edit = {}) {
    QDir().mkpath(patient_folder(root, p.last_name, p.first_name, p.medical_id));
    const QString path = patient_file_path(root, p.last_name, p.first_name, p.medical_id);
    QStringList lines = patient_file_lines(
        QString::fromLatin1(release::patient_parameter_filestamp), version, p,
        QStringLiteral("22-Nov-26"), number_format,
        number_format == QLatin1String("comma") ? QLatin1Char(',') : QLatin1Char('.'));
    if (edit) edit(lines);
    EXPECT_TRUE(write_patient_files(path, lines));
    return path;
}

void write_sessions(const QString& root, const PatientParameters& p, int count) {
    const QString path = sessionfile(root, p.last_name, p.first_name, p.medical_id);
    QString saved;
    for (int n = 1; n <= count; ++n) {
        const SessionEntry entry{QStringLiteral(" %1").arg(n), "22-Nov-26 at 09:05:07", "1.2",
                                 " 12", "Inhale", " 3", "Manual"};
        ASSERT_TRUE(write_session_entry(path, QString::number(n), entry, saved));
    }
}

// Two seconds of breathing recorded by the console's recording code into the patient's
// folder, as session `session`.
void record_curve(const QString& root, const PatientParameters& p, const QString& session) {
    Rig rig;
    rig.form.data_directory = root, rig.form.session = session, rig.form.thresh = p.thresh;
    rig.form.patient_last_name = p.last_name, rig.form.patient_first_name = p.first_name;
    rig.form.patient_medical_id = p.medical_id;
    rig.form.patient_defined = rig.form.cmdRecord.Enabled = true;
    rig.form.cmdRecord_Click();
    for (int i = 0; i < 100; ++i)
        rig.fakes.serial.receive(data_frame(0x06, 1, static_cast<int16_t>(250 + i)));
    rig.form.cmdPause_Click();
}

// Every file and folder under `root`: contents, mode and modification time.
std::map<QString, std::tuple<QByteArray, mode_t, long long>> snapshot(const QString& root) {
    std::map<QString, std::tuple<QByteArray, mode_t, long long>> entries;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        struct stat info {};
        ::lstat(QFile::encodeName(path).constData(), &info);
        QFile file(path);
        entries[path] = {S_ISREG(info.st_mode) && file.open(QIODevice::ReadOnly) ? file.readAll()
                                                                                 : QByteArray(),
                         info.st_mode, info.st_mtim.tv_sec * 1000000000LL + info.st_mtim.tv_nsec};
    }
    return entries;
}

struct ProgramRun { int status; QString out, err; };

ProgramRun run_console(const QStringList& args, const QString& program = ZELMOOR_PATH) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    // A machine with a decimal point; the display would only matter if the console started.
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        env.remove(QLatin1String(name));
    // The demo's console and simulator: the ones built here, never installed ones.
    env.insert(QStringLiteral("ZEL_CONSOLE"), QStringLiteral(ZELMOOR_PATH));
#ifdef ZELMOOR_SIM_PATH
    env.insert(QStringLiteral("ZEL_SIM"), QStringLiteral(ZELMOOR_SIM_PATH));
#endif
    process.setProcessEnvironment(env);
    process.start(program, args);
    EXPECT_TRUE(process.waitForFinished(60000)) << args.join(u' ').toStdString();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromLocal8Bit(process.readAllStandardOutput()),
            QString::fromLocal8Bit(process.readAllStandardError())};
}

TEST(PatientCheck, names_each_verdict_and_leaves_every_file_as_it_was) {
    load_default_messages();
    QTemporaryDir dir;
    const QString root = dir.path();

    const PatientParameters good = patient("Able", "1");
    write_patient(root, good);
    write_sessions(root, good, 2);
    record_curve(root, good, QStringLiteral("1"));
    record_curve(root, good, QStringLiteral("2"));

    // Edited by hand after it was saved.
    const QString edited = write_patient(root, patient("Baker", "2"));
    QFile::setPermissions(edited, QFile::permissions(edited) | QFileDevice::WriteOwner);
    write(edited, "ZEL Patient Parameter File\r\n3.00.01\r\n");
    QFile::setPermissions(edited, QFile::permissions(edited) & ~QFileDevice::WriteOwner);

    const QString lost = write_patient(root, patient("Cole", "3"));
    QFile::remove(companion_path(lost));

    const QString version = release::software_version();
    write_patient(root, patient("Dunn", "4"), QStringLiteral("2.10.00"));
    write_patient(root, patient("Eyre", "5"), version, QStringLiteral("comma"));
    write_patient(root, patient("Ford", "6"), version, QStringLiteral("dot"),
                  [](QStringList& lines) { lines[0] = QStringLiteral("Some other file"); });
    write_patient(root, patient("Gray", "7"), version, QStringLiteral("dot"),
                  [](QStringList& lines) { lines[6] = QStringLiteral("Threshold:high"); });

    // Loads, but its history names a third session that isn't there and one curve is not
    // a curve file.
    const PatientParameters holes = patient("Hart", "8");
    write_patient(root, holes);
    write_sessions(root, holes, 2);
    const QString folder =
        patient_folder(root, holes.last_name, holes.first_name, holes.medical_id);
    const QString history = folder + QStringLiteral("/session.ini");
    write(history, contents(history).replace("SESSIONS= 2", "SESSIONS= 3"));
    write(folder + QStringLiteral("/notes.dat"), "shopping list\r\n");

    QDir().mkpath(root + QStringLiteral("/Empty_folder_9"));
    // Patients quarantined before are not patients to load.
    QDir().mkpath(root + QLatin1Char('/') + message_text(342) + QStringLiteral("/Old_Pat_1"));

    const auto before = snapshot(root);
    ASSERT_GT(before.size(), 30u);
    const ProgramRun run = run_console({QStringLiteral("--check"), root});
    EXPECT_EQ(run.status, 1) << run.err.toStdString();
    const QStringList expected = {
        "Able_Ann_1: loads; sessions: 2",
        "Baker_Ann_2: would be quarantined: CRC differs; sessions: 0",
        "Cole_Ann_3: would be quarantined: missing companion; sessions: 0",
        "Dunn_Ann_4: would be quarantined: other release (2.10.00); sessions: 0",
        "Empty_folder_9: refused: not a patient file (no .zel file); sessions: 0",
        "Eyre_Ann_5: refused: number format (file comma, this machine dot); sessions: 0",
        "Ford_Ann_6: refused: not a patient file; sessions: 0",
        "Gray_Ann_7: unreadable (Type mismatch (13)); sessions: 0",
        "Hart_Ann_8: loads; sessions: 3",
        "  session.ini: no ID for session 3: Error opening session history file.",
        "  notes.dat: would not load: " + folder +
            "/notes.dat is not in the expected ZEL format. (515)",
        "patients: 2 load, 3 would be quarantined, 3 refused, 1 unreadable; session histories: "
        "1 unreadable; curves: 2 readable, 1 not",
    };
    EXPECT_EQ(run.out.split(u'\n', Qt::SkipEmptyParts), expected) << run.out.toStdString();
    EXPECT_TRUE(before == snapshot(root)) << "the check changed a file";

    // The good patient alone passes.
    QTemporaryDir alone;
    write_patient(alone.path(), good);
    record_curve(alone.path(), good, QStringLiteral("1"));
    const ProgramRun clean = run_console({QStringLiteral("--check"), alone.path()});
    EXPECT_EQ(clean.status, 0);
    EXPECT_EQ(clean.out, QStringLiteral("Able_Ann_1: loads; sessions: 0\npatients: 1 load, 0 would "
                                        "be quarantined, 0 refused, 0 unreadable; session histories: "
                                        "0 unreadable; curves: 1 readable, 0 not\n"));
    // The same patient with a session history the dialog can't read fails the check.
    write_sessions(alone.path(), good, 3);
    const QString alone_history =
        patient_folder(alone.path(), good.last_name, good.first_name, good.medical_id) +
        QStringLiteral("/session.ini");
    write(alone_history, contents(alone_history).replace("ID= 2", "XX= 2"));
    const ProgramRun broken = run_console({QStringLiteral("--check"), alone.path()});
    EXPECT_EQ(broken.status, 1) << broken.out.toStdString();
    EXPECT_TRUE(broken.out.contains(QStringLiteral("session histories: 1 unreadable")))
        << broken.out.toStdString();
}

// None of these may start a console or a simulator: without a display they would fail, with
// one they would wait for a module; either way not at once with this status.
TEST(ProgramCommandLines, answer_help_version_and_wrong_use_without_starting) {
    struct Case { const char* program; QStringList args; int status; const char* out, *err; };
    const Case cases[] = {
        {ZELMOOR_PATH, {"--help"}, 0, "Usage: zelmoor\n", ""},
        {ZELMOOR_PATH, {"--version"}, 0, "zelmoor ", ""},
        {ZELMOOR_PATH, {"--bogus"}, 2, "", "zelmoor: unrecognized option '--bogus'\nUsage: zelmoor\n"},
        {ZELMOOR_PATH, {"--review", "--zoom"}, 2, "", "unrecognized option '--zoom'"},
        {ZELMOOR_PATH, {"--check"}, 2, "", "option '--check' needs a FOLDER"},
        {ZELMOOR_PATH, {"--check", "a", "b"}, 2, "", "extra operand 'b'"},
        {ZELMOOR_PATH, {"stray"}, 2, "", "extra operand 'stray'\nUsage: zelmoor\n"},
        {ZELMOOR_PATH, {"--stats", "--csv"}, 2, "", "option '--stats' needs a FILE or a FOLDER"},
        {ZELMOOR_PATH, {"--stats", "--tsv", "a.dat"}, 2, "", "unrecognized option '--tsv'"},
#ifdef ZELMOOR_SIM_PATH
        {ZELMOOR_SIM_PATH, {"--help"}, 0, "Usage: zelmoor-sim [OPTION]...\n", ""},
        {ZELMOOR_SIM_PATH, {"--bogus"}, 2, "", "Usage: zelmoor-sim [OPTION]...\n"},
        {ZELMOOR_SIM_PATH, {"--script"}, 2, "", "Missing value after '--script'"},
        {ZELMOOR_DEMO_PATH, {"--headless", "--help"}, 0, "Usage: zelmoor-demo [OPTION]...\n", ""},
        {ZELMOOR_DEMO_PATH, {"--bogus"}, 2, "", "unrecognized option '--bogus'\nUsage: zelmoor-demo"},
        {ZELMOOR_DEMO_PATH, {"--seed"}, 2, "", "option '--seed' needs a value"},
#endif
        // Used rightly, on a folder that isn't there: no usage text.
        {ZELMOOR_PATH, {"--check", "/nonexistent"}, 2, "", "zelmoor: /nonexistent: not a folder\n"},
        {ZELMOOR_PATH, {"--stats", "/nonexistent"}, 1, "", "/nonexistent: no such file or folder\n"},
    };
    for (const Case& c : cases) {
        const ProgramRun run = run_console(c.args, QString::fromLocal8Bit(c.program));
        const QString name = QFileInfo(QString::fromLocal8Bit(c.program)).fileName();
        SCOPED_TRACE((name + u' ' + c.args.join(u' ')).toStdString());
        EXPECT_EQ(run.status, c.status);
        EXPECT_EQ(*c.out ? run.out.left(int(strlen(c.out))) : run.out, QLatin1String(c.out))
            << run.out.toStdString();
        EXPECT_TRUE(run.err.contains(QLatin1String(c.err))) << run.err.toStdString();
        // A wrong use names the way to the usage text; a right one gives none.
        EXPECT_EQ(run.err.contains(QStringLiteral("Try '%1 --help'").arg(name)),
                  c.status == 2 && !c.args.contains("/nonexistent"));
    }
}

}  // namespace
}  // namespace zel::test
