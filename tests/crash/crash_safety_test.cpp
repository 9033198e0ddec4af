// The console killed (SIGKILL) at random moments while it saves the patient file, zel.ini and
// the session history and records a curve, run after run over the same files. After each kill:
// every file replaced whole is its old or its new version, never a mixture; the next load of
// the patient takes a patient whose companion matches and quarantines, whole, one whose
// companion does not; each curve file has lost at most the line being written; the patient of
// another release that the program quarantines to and fro is whole in one place.
//   ZEL_CRASH_KILLS=1000 build/tests/test_crash     (100 kills by default)
#include <gtest/gtest.h>
#include <zlib.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <map>
#include <optional>
#include <random>
#include <set>

#include "crash/program/crash_console.h"
#include "data/patient_file.h"
#include "data/quarantine.h"
#include "fakes/files.h"
#include "language/messages.h"

namespace zel::test::crash {
namespace {

constexpr long no_file = -1;

std::optional<QByteArray> contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? std::optional(file.readAll()) : std::nullopt;
}

QByteArray companion_for(const QByteArray& patient_file) {
    const uLong crc = crc32(0L, reinterpret_cast<const Bytef*>(patient_file.constData()),
                            static_cast<uInt>(patient_file.size()));
    return "CRC:" + QByteArray::number(static_cast<qulonglong>(crc), 16).toUpper() + "\r\n";
}

// What a run of the writer said before it was killed.
struct RunReport {
    bool ready = false;
    long begun = no_file;  // the last version begun
    long moves = 0;        // quarantines done
};

RunReport read_report(const QByteArray& output) {
    RunReport report;
    for (const QByteArray& line : output.split('\n')) {
        if (line == "ready") report.ready = true;
        if (line.startsWith("v ")) report.begun = line.mid(2).toLong();
        if (line == "q") ++report.moves;
    }
    return report;
}

struct Tally {
    long kills = 0, mixtures = 0, quarantined = 0, partial_lines = 0;
    // Quarantines by the program (across file systems: copies), and the kills that caught one
    // copying or removing its source, or with both copies whole.
    long moves = 0, moves_across = 0, cut_copies = 0, twice = 0;
    // Files that are none of the console's: a temporary file that a kill caught between its
    // creation and its rename over the old file. The next save of that file removes it, so
    // they never pile up: at most one a file replaced whole.
    size_t most_strays_at_once = 0;
};

class CrashRun {
public:
    explicit CrashRun(const QString& root_) : root(root_), folder(root_) {
        const QString q = QLatin1Char('/') + message_text(342), here = root + "/sites/b-here";
        QDir().mkpath(folder.site_a + "/Move_Out_M1/curves");
        QDir().mkpath(here);
        QFile::link(folder.site_a, here + q);
        QFile::link(folder.site_a, elsewhere.path() + q);
        QFile::link(folder.site_b, folder.site_a + q);
        point_site_b(false);
        const PatientParameters p{"Move", "Out", "M1"};
        write_patient_files(folder.site_a + "/Move_Out_M1/Move.zel",
                            patient_file_lines("ZEL Patient Parameter File", "2.01.07", p,
                                               "1/2/2026", "dot", QLatin1Char('.')));
        QFile curve(folder.site_a + "/Move_Out_M1/curves/1.dat");
        if (curve.open(QIODevice::WriteOnly)) curve.write(QByteArray(1 << 18, 'v'));
        curve.close();
        mover = tree(folder.site_a + "/Move_Out_M1");
    }

    // One run of the writer, killed after `delay_ms` once it is ready; then every check.
    void kill_once(long delay_ms) {
        const long first = next_version;
        QProcess writer;
        writer.start(QStringLiteral(CRASH_WRITER_PATH),
                     {root, QString::number(run), QString::number(first)});
        ASSERT_TRUE(writer.waitForStarted(10000));
        QByteArray output;
        while (!output.contains("ready\n")) {
            ASSERT_TRUE(writer.waitForReadyRead(10000))
                << "the writer never got ready: " << writer.readAllStandardError().toStdString();
            output += writer.readAllStandardOutput();
        }
        QThread::msleep(static_cast<unsigned long>(delay_ms));
        writer.kill();
        ASSERT_TRUE(writer.waitForFinished(10000));
        ASSERT_EQ(writer.exitStatus(), QProcess::CrashExit)
            << "the writer ended by itself: " << writer.readAllStandardError().toStdString();
        output += writer.readAllStandardOutput();
        const RunReport report = read_report(output);
        ++tally.kills;

        const std::pair<QString CrashFolder::*, Kept*> wholes[] = {
            {&CrashFolder::patient_file, &patient}, {&CrashFolder::companion_file, &companion},
            {&CrashFolder::settings_file, &settings}, {&CrashFolder::session_file, &session}};
        for (const auto& [file, kept] : wholes) check_whole(file, *kept, report, first);
        check_curve(report, first);
        check_earlier_curves();
        load_patient();
        load_settings();
        note_strays();
        check_mover(report);

        if (report.begun != no_file) next_version = report.begun + 1;
        ++run;
    }

    Tally tally;

private:
    // A file as the last check found it.
    struct Kept {
        std::optional<QByteArray> bytes;  // none where the file does not exist
        long version = no_file;  // no_file where it is none of the versions
    };

    // The file must be as the run found it (only while the run had not finished its first
    // version), or byte for byte the version the run had reached, or the one before it.
    void check_whole(QString CrashFolder::*file, Kept& kept, const RunReport& report, long first) {
        const QString& path = folder.*file;
        const std::optional<QByteArray> bytes = contents(path);
        const bool may_be_old = report.begun == no_file || report.begun == first;
        if (may_be_old && bytes == kept.bytes) return;
        std::vector<long> versions;
        if (report.begun != no_file) versions.push_back(report.begun);
        if (report.begun != no_file && report.begun > first) versions.push_back(report.begun - 1);
        for (long v : versions) {
            if (bytes && *bytes == expected.whole_file(v, file)) {
                kept = {bytes, v};
                return;
            }
        }
        ++tally.mixtures;
        ADD_FAILURE() << qPrintable(path) << " after run " << run << " is neither as it was nor "
                      << "any of the versions " << ::testing::PrintToString(versions) << ":\n"
                      << bytes.value_or("(no file)").toStdString();
        kept = {bytes, no_file};
    }

    // The run's curve file: its header, lines 1 to m whole, and at most a part of line m + 1,
    // the one being written; m at least every line of the versions finished.
    void check_curve(const RunReport& report, long first) {
        const QString path = folder.curve_file(run);
        const QByteArray bytes = contents(path).value_or(QByteArray());
        ASSERT_FALSE(bytes.isEmpty()) << "no curve file after run " << run;
        const QByteArray header = expected.curve_header(run, first);
        ASSERT_TRUE(bytes.startsWith(header)) << "the curve header of run " << run;
        qsizetype at = header.size();
        long m = 0;
        while (at < bytes.size()) {
            const QByteArray line = expected.curve_line(m + 1);
            const QByteArray rest = bytes.mid(at, line.size());
            if (rest == line) {
                ++m;
                at += line.size();
                continue;
            }
            ASSERT_TRUE(line.startsWith(rest) && at + rest.size() == bytes.size())
                << "curve file of run " << run << ": line " << m + 1 << " reads "
                << bytes.mid(at).toStdString() << " where " << line.toStdString() << " belongs";
            ++tally.partial_lines;
            break;
        }
        const long finished =
            report.begun == no_file ? 0 : (report.begun - first) * lines_per_version;
        EXPECT_GE(m, finished) << "curve file of run " << run << " lost whole lines";
        EXPECT_LE(m, finished + lines_per_version) << "curve file of run " << run;
        curves[path] = bytes;
    }

    // A run's curve file never changes once its run is over.
    void check_earlier_curves() {
        for (const auto& [path, bytes] : curves) {
            if (path == folder.curve_file(run)) continue;
            EXPECT_EQ(contents(path), bytes) << qPrintable(path);
        }
    }

    // The load of the patient, as the console does it once the file is chosen.
    void load_patient() {
        const std::optional<QByteArray> zel = contents(folder.patient_file);
        if (!zel) return;
        const std::optional<QByteArray> sfv = contents(folder.companion_file);
        const bool matches = sfv == companion_for(*zel);
        const std::map<QString, QByteArray> before = tree(folder.patient_folder);

        CrashConsole loader(root);
        loader.form.patient_parameter_filename = folder.patient_file;
        const bool accepted = loader.form.read_patient_parameter_file();
        QDir::setCurrent(root);
        ASSERT_EQ(accepted, matches) << "run " << run << ": companion " << sfv.value_or("").toStdString();
        if (accepted) {
            if (patient.version != no_file) { EXPECT_EQ(loader.form.temp_duration, patient.version); }
            EXPECT_EQ(tree(folder.patient_folder), before);
            return;
        }
        // Quarantined whole: the folder gone from the patients, everything in it kept.
        ++tally.quarantined;
        EXPECT_FALSE(QFileInfo::exists(folder.patient_folder));
        EXPECT_EQ(tree(folder.quarantine + QStringLiteral("/Crash_Kill_K1")), before)
            << "run " << run;
        EXPECT_EQ(loader.fakes.windows.message_texts,
                  std::vector<QStringList>{QStringList{message_text(296)}});
        delete_folder(folder.quarantine);
        patient = companion = session = Kept{};
        curves.clear();
    }

    void load_settings() {
        if (settings.version == no_file) return;
        CrashConsole loader(root);
        loader.form.load_system_settings();
        EXPECT_TRUE(loader.fakes.boxes.shown.isEmpty()) << "zel.ini after run " << run;
        EXPECT_EQ(loader.form.duration, static_cast<double>(settings.version));
    }

    void note_strays() {
        const std::set<QString> known = {folder.patient_file, folder.companion_file,
                                         folder.settings_file, folder.session_file};
        std::set<QString> strays;
        for (const QString& where : {folder.app_data, folder.patient_folder}) {
            QDirIterator it(where, QDir::Files | QDir::Hidden);
            while (it.hasNext()) {
                const QString path = it.next();
                if (!known.count(path) && !curves.count(path) && !path.contains("/LOG/"))
                    strays.insert(path);
            }
        }
        for (const QString& path : strays)
            EXPECT_TRUE(path.contains(QStringLiteral(".new-"))) << "not a temporary: " << qPrintable(path);
        tally.most_strays_at_once = std::max(tally.most_strays_at_once, strays.size());
    }

    // The patient of another release: whole in exactly one of the two folders; across file
    // systems a copy or a removal cut short may lie beside it, not under its name, and both
    // may be whole between the copy's rename and the removal of the source.
    void check_mover(const RunReport& report) {
        (across ? tally.moves_across : tally.moves) += report.moves;
        int whole = 0;
        for (const QString& site : {folder.site_a, folder.site_b}) {
            for (const QString& name : QDir(site).entryList(QDir::AllEntries | QDir::System |
                                                            QDir::NoDotAndDotDot)) {
                const QString path = site + QLatin1Char('/') + name;
                if (name == message_text(342)) continue;
                if (name == QLatin1String("Move_Out_M1")) {
                    EXPECT_EQ(tree(path), mover) << "run " << run << ": " << qPrintable(path);
                    if (++whole < 2) continue;
                    ++tally.twice;
                    delete_folder(path);
                    continue;
                }
                EXPECT_TRUE(across && (name.endsWith(".incomplete") || name.endsWith(".removing")))
                    << "run " << run << ": " << qPrintable(path);
                ++tally.cut_copies;
                delete_folder(path);
            }
        }
        EXPECT_GE(whole, 1) << "run " << run << ": the patient is nowhere whole";
        EXPECT_TRUE(across || whole == 1) << "run " << run << ": both whole after a rename";
        // While the patient lies in the first folder the second may change its file system.
        if (QFileInfo::exists(folder.site_a + "/Move_Out_M1")) point_site_b(run % 2 == 1);
    }

    void point_site_b(bool other_file_system) {
        across = other_file_system && elsewhere.isValid();
        QFile::remove(folder.site_b);
        QFile::link(across ? elsewhere.path() : root + "/sites/b-here", folder.site_b);
    }

    const QString root;
    const CrashFolder folder;
    QTemporaryDir elsewhere{QStringLiteral("/dev/shm/zel-crash-XXXXXX")};
    bool across = false;
    std::map<QString, QByteArray> mover;
    Expected expected;
    long run = 1;
    long next_version = 1;
    Kept patient, companion, settings, session;
    std::map<QString, QByteArray> curves;
};

TEST(CrashSafety, every_file_is_whole_after_kills_at_random_moments) {
    const long kills = qEnvironmentVariableIsSet("ZEL_CRASH_KILLS")
                           ? qEnvironmentVariableIntValue("ZEL_CRASH_KILLS")
                           : 100;
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    // A version takes some milliseconds: kills land within a run's first version as well as
    // after a few.
    std::uniform_int_distribution<long> delay_ms(0, 300);
    QTemporaryDir root;
    CrashRun crash(root.path());
    for (long k = 0; k < kills && !HasFatalFailure(); ++k) crash.kill_once(delay_ms(random));

    const Tally& t = crash.tally;
    std::printf("[          ] seed %u: %ld kills, %ld lines cut by a kill, "
                "%ld patients quarantined, at most %zu temporary files at once; "
                "%ld quarantines by rename, %ld by copy, %ld kills in a copy or removal, "
                "%ld with both copies whole\n",
                seed, t.kills, t.partial_lines, t.quarantined, t.most_strays_at_once, t.moves,
                t.moves_across, t.cut_copies, t.twice);
    EXPECT_EQ(t.mixtures, 0);
    EXPECT_LE(t.most_strays_at_once, 4u);
    EXPECT_EQ(t.kills, kills);
}

}  // namespace
}  // namespace zel::test::crash
