// Every file the console writes, under every fault a site's disk or share can give: nothing
// already on disk is lost, no temporary file stays behind, and the operator reads the message
// of the routine or the one report with the system's words for the fault.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <cerrno>
#include <functional>
#include <set>

#include "app/patient_rig.h"
#include "data/whole_file.h"
#include "fakes/files.h"
#include "fakes/rig.h"
#include "faults/fault_injection.h"
#include "language/messages.h"
#include "platform/qt_printer.h"
#include "review/review_rig.h"

namespace zel::test {
namespace {

QStringList temporaries(const QString& folder) {
    return QDir(folder).entryList({QStringLiteral("*.new-*")}, QDir::Files | QDir::Hidden);
}

// Doe, Jane, A1, whose folder lies in the patients' folder of the rig.
struct DoeRig : Rig {
    DoeRig() {
        form.data_directory = app_data.path() + QStringLiteral("/patients");
        form.patient_parameter_filestamp = QStringLiteral("ZEL Patient Parameter File");
        form.patient_last_name = QStringLiteral("Doe"), form.patient_first_name = "Jane";
        form.patient_medical_id = QStringLiteral("A1");
    }
    QString folder() const { return form.data_directory + QStringLiteral("/Doe_Jane_A1"); }
    QString zel() const { return folder() + QStringLiteral("/Doe.zel"); }
};

// A patient under treatment whose every file exists once, written by the console itself.
struct DiskRig : DoeRig {
    DiskRig() {
        as_patient(form, form.data_directory, QStringLiteral("3"));
        form.save_patient_parameters();
        form.save_session();
        form.save_ini_file();
        QString data_path = form.data_directory;
        form.write_data_path(data_path);
        form.write_tarrow_log();
        form.cmdRecord_Click();
        fakes.serial.OnComm = [this] {
            form.run_event("MSComm1_OnComm", [this] { form.MSComm1_OnComm(); });
        };
        good_frames(3);
        bad_frame();
        form.session = QStringLiteral("4");
    }
    QString checksum_log() const {
        const QDir logs(form.AppDataPath + QStringLiteral("/LOG"));
        const QStringList names = logs.entryList(QDir::Files);
        return names.isEmpty() ? QString() : logs.filePath(names.first());
    }
    void good_frames(int n) {
        for (int k = 0; k < n; ++k) fakes.serial.receive(data_frame(0x06, 1, 250));
    }
    void bad_frame() { fakes.serial.receive(bad_sum(data_frame())); }
};

enum class Outcome { message, report, quiet };

using In = std::function<QString(DiskRig&)>;
using Do = std::function<void(DiskRig&)>;

struct Writer {
    const char* name;
    std::set<Call> calls;  // the calls that write makes on its file
    Outcome outcome;
    int message;  // the catalogue message of Outcome::message
    In file;      // the file that must lose nothing (made ready)
    Do write;
    bool appends = false;  // grows the file; otherwise replaces it whole
};

In in_folder(const char* name) {
    return [name](DiskRig& r) { return r.folder() + QLatin1Char('/') + QLatin1String(name); };
}
In in_app_data(const char* name) {
    return [name](DiskRig& r) { return r.form.AppDataPath + QLatin1Char('/') + QLatin1String(name); };
}
Do in_event(const char* name, void (Form1::*handler)()) {
    return [=](DiskRig& r) { r.form.run_event(name, [&] { (r.form.*handler)(); }); };
}

const std::set<Call> replacing = {Call::open, Call::write, Call::short_write,
                                  Call::sync, Call::close, Call::rename};
const std::set<Call> appending = {Call::write, Call::short_write};  // to a file open already
const std::set<Call> opening = {Call::open, Call::write, Call::short_write, Call::close};
const In curve = [](DiskRig& r) { return r.form.record_filename; };
const Do save_patient = [](DiskRig& r) { r.form.thresh = 1.55f; r.form.save_patient_parameters(); };

const Writer writers[] = {
    {"session history", replacing, Outcome::message, 101, in_folder("session.ini"),
     [](DiskRig& r) { r.form.save_session(); }},
    {"patient file", replacing, Outcome::message, 142, in_folder("Doe.zel"), save_patient},
    {"patient file's companion", replacing, Outcome::message, 142, in_folder("Doe.sfv"),
     save_patient},
    {"system settings", replacing, Outcome::message, 142, in_app_data("zel.ini"),
     [](DiskRig& r) { r.form.duration = 17; r.form.save_ini_file(); }},
    {"data path", replacing, Outcome::quiet, 0, in_app_data("datapath.ini"), [](DiskRig& r) {
         QString elsewhere = QStringLiteral("/srv/patients");
         EXPECT_FALSE(r.form.write_data_path(elsewhere));
     }},
    // Lines reach the disk a second of frames at a time, off the frame's thread; a failure of
    // that is reported at a later line.
    {"curve line", appending, Outcome::report, 0, curve, [](DiskRig& r) { r.good_frames(2); }, true},
    {"a second of curve lines", {Call::write, Call::short_write, Call::sync}, Outcome::report, 0,
     curve, [](DiskRig& r) {
         r.good_frames(47);
         if (r.form.curve_file) r.form.curve_file->settle();
         r.good_frames(1);
     }, true},
    {"curve file at pause", {Call::sync, Call::close}, Outcome::report, 0, curve,
     in_event("cmdPause_Click", &Form1::cmdPause_Click), true},
    {"curve header", opening, Outcome::report, 0, [](DiskRig& r) {
         r.form.cmdPause_Click();
         r.form.record_file_created = false;
         return r.folder() + QStringLiteral("/Doe_4.dat");
     }, in_event("cmdRecord_Click", &Form1::cmdRecord_Click), true},
    {"checksum log", appending, Outcome::report, 0, [](DiskRig& r) { return r.checksum_log(); },
     [](DiskRig& r) { r.bad_frame(); }, true},
    {"gating log", opening, Outcome::quiet, 0, in_folder("tarrow_log.txt"),
     [](DiskRig& r) { r.form.write_tarrow_log(); }, true},
};

struct Fault { const char* name; Call call; int error; int number; };  // number: of the report

const Fault faults[] = {
    {"full disk", Call::write, ENOSPC, 61},       {"quota", Call::write, EDQUOT, 61},
    {"I/O error", Call::write, EIO, 57},          {"failed sync", Call::sync, EIO, 57},
    {"failed close", Call::close, EIO, 57},       {"failed rename", Call::rename, EIO, 57},
    {"read-only share", Call::open, EROFS, 70},   {"no permission", Call::open, EACCES, 70},
    {"folder gone", Call::open, ENOENT, 76},      {"share full at open", Call::open, ENOSPC, 61},
    {"half a write, then a full disk", Call::short_write, ENOSPC, 61},
};

TEST(DiskFaults, every_writer_under_every_fault_keeps_what_was_on_disk) {
    int checked = 0;
    for (const Writer& writer : writers) {
        for (const Fault& fault : faults) {
            SCOPED_TRACE(std::string(writer.name) + " / " + fault.name);
            DiskRig rig;
            const QString path = writer.file(rig), folder = QFileInfo(path).absolutePath();
            ASSERT_FALSE(path.isEmpty());
            const QByteArray before = contents(path);
            const qsizetype shown = rig.fakes.boxes.shown.size();
            const bool strikes = writer.calls.count(fault.call) > 0;
            testing::internal::CaptureStderr();
            inject(fault.call, fault.error, folder.toStdString());
            writer.write(rig);
            clear_faults();
            const std::string logged = testing::internal::GetCapturedStderr();
            const QByteArray after = contents(path);
            const QString boxes = rig.fakes.boxes.shown.mid(shown).join(u'|');
            EXPECT_TRUE(temporaries(folder).isEmpty());
            EXPECT_EQ(failures() > 0, strikes) << "the fault was reached only by its calls";
            checked += strikes;
            if (!strikes || writer.outcome == Outcome::quiet) {
                EXPECT_EQ(boxes, QString());
            } else if (writer.outcome == Outcome::message) {
                EXPECT_EQ(boxes, message_text(writer.message));
                EXPECT_TRUE(rig.form.patient_defined) << "the patient stays in force";
                // The message is the routine's own; the cause goes to the log.
                EXPECT_NE(logged.find(std::strerror(fault.error)), std::string::npos) << logged;
            } else {
                // One report, with the number of the fault and the system's words for it.
                const QString words = QString::fromLocal8Bit(std::strerror(fault.error));
                EXPECT_TRUE(QRegularExpression(QStringLiteral("^Run-time error %1 [^|]*%2[^|]*$")
                                                   .arg(fault.number)
                                                   .arg(QRegularExpression::escape(words)))
                                .match(boxes).hasMatch()) << boxes.toStdString();
                EXPECT_FALSE(rig.form.curve_file || rig.form.checksum_log) << "files closed";
            }
            EXPECT_EQ(rig.ended.size(), strikes && writer.outcome == Outcome::report ? 1 : 0);
            if (!writer.appends) {
                EXPECT_EQ(after, before) << "the old file byte for byte";
            } else {
                // Whole lines only: what was there stays, and a line either arrived whole or
                // not at all.
                EXPECT_TRUE(before == "<absent>" || after.startsWith(before));
                EXPECT_TRUE(after == "<absent>" || after.isEmpty() || after.endsWith("\r\n"));
                EXPECT_TRUE((fault.call != Call::write && fault.call != Call::short_write) ||
                            after == before || after == "<absent>");
            }
        }
    }
    EXPECT_EQ(checked, 88);
}

// The new patient file is in place when its companion's rename fails: the old file is put back,
// so that the pair still loads, and the operator and the log are told.
TEST(DiskFaults, a_companion_that_can_not_be_put_in_place_takes_the_new_patient_file_back) {
    DiskRig rig;
    const QByteArray zel = contents(rig.zel()), sfv = contents(rig.folder() + "/Doe.sfv");
    testing::internal::CaptureStderr();
    inject(Call::rename, EIO, "/Doe.sfv");
    save_patient(rig);
    clear_faults();
    const std::string logged = testing::internal::GetCapturedStderr();
    EXPECT_EQ(failures(), 1);
    EXPECT_EQ(contents(rig.zel()), zel);
    EXPECT_EQ(contents(rig.folder() + "/Doe.sfv"), sfv);
    EXPECT_TRUE(temporaries(rig.folder()).isEmpty());
    EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(142)});
    EXPECT_NE(logged.find("Device I/O error: Input/output error: " +
                          (rig.folder() + "/Doe.sfv").toStdString()),
              std::string::npos) << logged;
}

// A new patient whose first save fails was never stored: the folder the dialog made goes
// again, so that the same patient can be created once the disk is back. A later save that
// fails leaves the patient's folder and its files as they were.
TEST(DiskFaults, a_new_patient_whose_first_save_fails_leaves_no_folder_behind) {
    struct Case { const char* name; Call call; int error; const char* part; };
    const Case cases[] = {
        {"full disk", Call::write, ENOSPC, "Doe_Jane_A1"},
        {"read-only share", Call::open, EROFS, "Doe_Jane_A1"},
        {"failed rename", Call::rename, EIO, "Doe_Jane_A1"},
        {"the companion alone", Call::open, ENOSPC, "Doe.sfv"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        DoeRig rig;
        QDir().mkpath(rig.form.data_directory);
        inject(c.call, c.error, c.part);
        create_doe(rig);
        clear_faults();
        EXPECT_GT(failures(), 0);
        EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(142)});
        EXPECT_FALSE(QFileInfo::exists(rig.folder()) || rig.form.patient_defined ||
                     rig.form.cmdRecord.Enabled);
        EXPECT_EQ(rig.form.Label_last_name.Caption, message_text(226));

        create_doe(rig);
        EXPECT_TRUE(QFileInfo::exists(rig.folder() + QStringLiteral("/Doe.sfv")));
        EXPECT_EQ(rig.fakes.boxes.shown.size(), 1);
        inject(Call::open, EROFS, "Doe_Jane_A1");
        rig.form.save_patient_parameters();
        clear_faults();
        EXPECT_TRUE(QFileInfo::exists(rig.zel()));
    }
}

// A patient that fails its CRC while its quarantine fails: the move leaves nothing of itself
// in quarantine and the patient where it was; the operator is still told the patient is
// corrupt. Only a quarantine folder that can't be made ends the load with message 129.
TEST(DiskFaults, a_quarantine_that_fails_leaves_the_patient_where_it_was) {
    // The failing path is in the patients' folder, "Q" for the quarantine, "$" its end; a
    // patient of the name may lie in quarantine already; Form_CorruptInfo is shown, or else
    // message 129. A rename refused as across file systems is a copy that can't be put in place.
    struct Case { const char *name; Call call; int error; const char* path;
                  bool quarantined_before, corrupt_info; };
    const QString quarantine_name = message_text(342);
    const Case cases[] = {
        {"read-only patients' folder", Call::mkdir, EROFS, "Q$", false, false},
        {"read-only quarantine", Call::rename, EROFS, "Q/Doe_Jane_A1", false, true},
        {"another file system", Call::rename, EXDEV, "Q/Doe_Jane_A1$", false, true},
        {"another file system, numbered", Call::rename, EXDEV, "Q/Doe_Jane_A1( 2)$", true, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        DoeRig rig;
        const QString quarantine = rig.form.data_directory + QLatin1Char('/') + quarantine_name;
        QDir().mkpath(rig.folder());
        rig.form.save_patient_parameters();
        ASSERT_TRUE(QFile::remove(rig.folder() + QStringLiteral("/Doe.sfv")));
        rig.form.session = QStringLiteral("1");
        rig.form.save_session();
        const QByteArray patient_file = contents(rig.zel());
        QStringList in_quarantine;
        if (c.quarantined_before) {
            QDir().mkpath(quarantine + QStringLiteral("/Doe_Jane_A1"));
            write(quarantine + QStringLiteral("/Doe_Jane_A1/Doe.zel"), "the earlier patient\r\n");
            in_quarantine.append(QStringLiteral("Doe_Jane_A1"));
        }
        rig.fakes.dialogs.choose_file(rig.zel());
        QString failing = rig.form.data_directory + QLatin1Char('/') + QLatin1String(c.path);
        if (c.path[0] == 'Q') failing.replace(rig.form.data_directory + "/Q", quarantine);
        inject(c.call, c.error, failing.toStdString());
        rig.form.load_existing_patient_Click();
        clear_faults();

        EXPECT_GT(failures(), 0);
        EXPECT_EQ(contents(rig.zel()), patient_file);
        EXPECT_TRUE(QFileInfo::exists(rig.folder() + QStringLiteral("/session.ini")));
        EXPECT_EQ(QDir(quarantine).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                  in_quarantine);
        EXPECT_EQ(contents(quarantine + QStringLiteral("/Doe_Jane_A1/Doe.zel")),
                  c.quarantined_before ? QByteArray("the earlier patient\r\n") : "<absent>");
        EXPECT_EQ(rig.fakes.windows.log.contains(QStringLiteral("show Form_CorruptInfo")),
                  c.corrupt_info);
        EXPECT_EQ(rig.fakes.boxes.shown,
                  c.corrupt_info ? QStringList{} : QStringList{message_text(129)});
        EXPECT_FALSE(rig.form.patient_defined);
    }
}

// A folder taken away under a running recording (a removed folder, an unmounted share): the
// handle would go on writing into a file nobody can find, so the next line ends the program.
TEST(DiskFaults, a_recording_whose_folder_vanished_ends_at_the_next_line) {
    DiskRig rig;
    const QByteArray before = contents(rig.form.record_filename);
    const QString gone = rig.folder() + QStringLiteral("-moved");
    ASSERT_TRUE(QDir().rename(rig.folder(), gone));
    rig.good_frames(2);
    ASSERT_EQ(rig.fakes.boxes.shown.size(), 1);
    EXPECT_TRUE(rig.fakes.boxes.shown[0].startsWith(QStringLiteral("Run-time error 76 ")))
        << rig.fakes.boxes.shown[0].toStdString();
    EXPECT_EQ(rig.ended.size(), 1);
    EXPECT_TRUE(contents(gone + QStringLiteral("/Doe_3.dat")).startsWith(before));
    EXPECT_FALSE(QFileInfo::exists(rig.folder())) << "no folder made anew";
}

// The rename is made to last by synchronising the folder: the disk failing that sync fails the
// save, while a folder that can not be opened for it keeps the replacement as it stands.
TEST(DiskFaults, the_folder_is_synchronised_after_a_replacement) {
    QTemporaryDir dir;
    const QString folder = dir.path() + QStringLiteral("/share");
    ASSERT_TRUE(QDir().mkpath(folder));
    struct Case { Call call; int error; bool saved; };
    for (const Case c : {Case{Call::sync, EIO, false}, Case{Call::open, EACCES, true}}) {
        inject(c.call, c.error, "/share$");
        const bool saved = replace_whole_file(folder + QStringLiteral("/session.ini"), "[H]\r\n");
        const int failed = failures();
        clear_faults();
        EXPECT_EQ(saved, c.saved) << static_cast<int>(c.call);
        EXPECT_EQ(failed, 1) << static_cast<int>(c.call);
        EXPECT_EQ(contents(folder + QStringLiteral("/session.ini")), QByteArray("[H]\r\n"));
    }
}

// The export and the review's source curve: a failed export leaves the file of that name and
// says why.
TEST(DiskFaults, a_failed_export_leaves_the_file_of_that_name_and_says_why) {
    for (const Fault& fault : faults) {
        SCOPED_TRACE(fault.name);
        ReviewRig rig;
        rig.open_on({rig.write_curve(QStringLiteral("Doe_1.dat"), breathing_with_holds(1))});
        const QString out = rig.folder.path() + QStringLiteral("/out");
        QDir().mkpath(out);
        rig.write_text(QStringLiteral("out/slice.dat"), "an earlier export\r\n");
        inject(fault.call, fault.error, out.toStdString());
        rig.window.export_curve(0, 0.0, 1.0, out + QStringLiteral("/slice.dat"));
        clear_faults();
        EXPECT_EQ(contents(out + QStringLiteral("/slice.dat")), QByteArray("an earlier export\r\n"));
        EXPECT_TRUE(temporaries(out).isEmpty());
        ASSERT_EQ(rig.boxes.shown.size(), 1);
        EXPECT_TRUE(rig.boxes.shown[0].startsWith(message_text(142) + QLatin1Char('\n')));
        const QString words = QString::fromLocal8Bit(std::strerror(fault.error));
        EXPECT_TRUE(rig.boxes.shown[0].contains(words)) << rig.boxes.shown[0].toStdString();
    }
}

// A printout that can't be written whole says why; the PDF that had the name stays.
TEST(DiskFaults, a_printout_that_fails_says_why_and_leaves_the_pdf_of_that_name) {
    struct Case { Call call; int error; const char* words; };
    for (const Case c : {Case{Call::rename, EIO, "Input/output error"},
                         Case{Call::write, ENOSPC, "not written whole"}}) {
        QTemporaryDir dir;
        const QString pdf =
            write(dir.filePath(QStringLiteral("history.pdf")), "an earlier printout");
        QtPrinter printer;
        printer.device().setOutputFormat(QPrinter::PdfFormat);
        printer.device().setOutputFileName(pdf);
        printer.print_text(QStringLiteral("ZEL Patient Session History"), true);
        inject(c.call, c.error, dir.path().toStdString());
        const QString failure = printer.end_document();
        clear_faults();
        EXPECT_TRUE(failure.contains(QLatin1String(c.words))) << failure.toStdString();
        EXPECT_EQ(contents(pdf), QByteArray("an earlier printout"));
        EXPECT_TRUE(temporaries(dir.path()).isEmpty());
    }
}

// Patient data is closed to the machine's other users whatever the site's mask, while the
// operators' group keeps reading and writing; a file replaced whole keeps the mode it had.
TEST(FileModes, nothing_the_console_makes_grants_other_users_anything) {
    const mode_t site = ::umask(022);
    DoeRig rig;
    QDir().mkpath(rig.form.data_directory);
    create_doe(rig);
    rig.form.cmdRecord_Click();
    rig.form.save_session();
    rig.form.write_tarrow_log();
    rig.form.log_checksum_error();
    rig.form.save_ini_file();
    ReviewRig review;
    review.open_on({review.write_curve(QStringLiteral("Doe_1.dat"), breathing_with_holds(1))});
    review.window.export_curve(0, 0.0, 1.0, rig.folder() + QStringLiteral("/slice.dat"));
    QtPrinter printer;
    printer.device().setOutputFormat(QPrinter::PdfFormat);
    printer.device().setOutputFileName(rig.folder() + QStringLiteral("/history.pdf"));
    printer.print_text(QStringLiteral("ZEL Patient Session History"), true);
    EXPECT_EQ(printer.end_document(), QString());
    rig.form.reset_patient();  // the recording, left running, is made read-only
    const QString settings = rig.form.AppDataPath + QStringLiteral("/zel.ini");
    QFile::setPermissions(settings, QFile::permissions(settings) | QFile::ReadOther);
    rig.form.save_ini_file();
    ::umask(site);

    const QString in = rig.folder() + '/', logs = rig.form.AppDataPath + QStringLiteral("/LOG");
    const std::pair<QString, int> made[] = {
        {rig.folder(), 0750},           {rig.zel(), 0440},           {in + "Doe.sfv", 0640},
        {in + "Doe_1.dat", 0440},       {in + "session.ini", 0640},  {in + "tarrow_log.txt", 0640},
        {in + "slice.dat", 0440},       {in + "history.pdf", 0640},  {logs, 0750},
        {logs + '/' + QDir(logs).entryList(QDir::Files).value(0), 0640},
        {settings, 0644},  // as the site left it
    };
    for (const auto& [path, mode] : made) {
        struct stat info {};
        ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &info), 0) << path.toStdString();
        EXPECT_EQ(info.st_mode & 0777, static_cast<mode_t>(mode)) << path.toStdString();
    }
}

}  // namespace
}  // namespace zel::test
