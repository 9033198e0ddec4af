// The files of a session: the curve file with its header, the Record and Pause buttons over
// its life and reading it back with each kind of bad file; the session history with its entries
// added and replaced, the next suggestion, the duplicate test, and the file left whole when a
// write fails.
#include <gtest/gtest.h>

#include <QDir>
#include <functional>
#include <tuple>

#include "app/patient_rig.h"
#include "data/curve_file_reader.h"
#include "data/locale_number.h"
#include "data/profile_file.h"
#include "data/session_history_file.h"
#include "fakes/files.h"
#include "language/messages.h"

namespace zel::test {
namespace {

TEST(LocaleNumber, reads_the_machines_form_and_refuses_the_rest) {
    struct Case { const char* text; char separator; double value; int error; };
    const Case cases[] = {
        {" 1.35 ", '.', 1.35, 0}, {"-0.004", '.', -0.004, 0}, {"1,35", ',', 1.35, 0},
        {"1E-05", '.', 1e-05, 0}, {"+7", '.', 7, 0},          {".5", '.', 0.5, 0},
        // The other separator groups thousands: a file from the other kind of machine reads
        // a power of ten off instead of failing.
        {"1,5", '.', 15, 0},      {"0.02", ',', 2, 0},        {"", '.', 0, 13},
        {"  ", '.', 0, 13},       {"1.2.3", '.', 0, 13},      {"12a", '.', 0, 13},
        {"1E", '.', 0, 13},       {",5", '.', 0, 13},         {"1E999", '.', 0, 6},
    };
    for (const auto& c : cases) {
        double value = 0;
        const auto read = [&] { value = locale_number(c.text, QLatin1Char(c.separator), "test"); };
        EXPECT_EQ(error_of(read), c.error) << c.text;
        EXPECT_DOUBLE_EQ(value, c.value) << c.text;
    }
}

// A patient in force, session 3, on the 4th of March 2026 at 09:05:07.
struct SessionRig : Rig {
    SessionRig() {
        as_patient(form, app_data.path(), QStringLiteral("3"));
        form.thresh = 1.35f, form.duration = 15, form.inhale = true, form.breath_holds = 3;
        form.gating_start_mode = message_text(269);
        fakes.clock.when = QDateTime(QDate(2026, 3, 4), QTime(9, 5, 7));
    }
    // The file's lines, and an empty last one when it ends in a line break.
    QStringList lines(const QString& path) const {
        return QString::fromLatin1(read_profile_file(path)).split(QStringLiteral("\r\n"));
    }
    void frames(int n, uint8_t flags = 0x06, uint8_t balloon = 1, int16_t units = 250) {
        for (int k = 0; k < n; ++k) fakes.serial.receive(data_frame(flags, balloon, units));
    }
    QString path() const { return doe_folder(*this) + QStringLiteral("/session.ini"); }
    QByteArray contents() const { return read_profile_file(path()); }
    void save(const QString& session) {
        form.session = session;
        form.save_session();
    }
    QString next() { return form.get_next_sessionID("Doe", "Jane", "A1"); }
};

TEST(CurveFile, header_lines_and_zones_byte_for_byte) {
    SessionRig rig;
    rig.form.printHeader(doe_folder(rig) + QStringLiteral("/h.dat"));
    EXPECT_EQ(rig.lines(doe_folder(rig) + QStringLiteral("/h.dat")),
              QString::fromLatin1(
                  "CURVE_DATA_FILE_STAMP|HeaderStart|Threshold:1.35|Count Frequency:  50 |"
                  "Patient Last Name:          Doe|Medical ID:   A1|Date:         03-04-2026|"
                  "Time:         09:05:07|Session Number:             3|"
                  "Breath Hold Duration:        15 |Trigger on Inhale:          True||[Key]|"
                  "Status\tBalloon Valve|1\tdeflated|2\tready to inflate at threshold (inhale)|"
                  "3\tready to inflate at threshold (exhale)|4\tinflated|5\tfault||"
                  "Status\tPatient Switch|0\tDisabled|1\tEnabled|[Curve Data]|"
                  // "Patient Switch" fills its zone exactly: the next item goes one zone further.
                  "Session Time  Volume (liters)             Balloon Valve Status        "
                  "Patient Switch              Gating Mode   Gating Status Relay State|HeaderEnd|")
                  .split(QLatin1Char('|')));
}

TEST(CurveFile, record_pause_record_gives_one_file_one_header_a_gap_in_time_and_reads_back) {
    for (const char separator : {'.', ','}) {
        SCOPED_TRACE(separator);
        SessionRig rig;
        rig.fakes.locale.separator = QLatin1Char(separator);
        rig.form.patient_defined = false;
        rig.form.cmdRecord_Click();  // does nothing without a patient
        EXPECT_TRUE(rig.form.cmdRecord.Enabled && !rig.form.bRecord);
        rig.form.patient_defined = true;
        rig.frames(10);  // before the recording: counted in its time
        rig.form.cmdRecord_Click();
        EXPECT_TRUE(!rig.form.cmdRecord.Enabled && rig.form.cmdPause.Enabled);
        for (const int16_t units : {250, -1, 32767, -32767, 0}) rig.frames(1, 0x06, 1, units);
        rig.form.cmdPause_Click();
        EXPECT_FALSE(rig.form.curve_file);
        rig.frames(3, 0x04, 1, 5);  // not recorded, but counted
        rig.form.cmdRecord_Click();
        rig.frames(1, 0x04, 4, 300);
        rig.form.cmdPause_Click();

        const QString path = doe_folder(rig) + QStringLiteral("/Doe_3.dat");
        EXPECT_EQ(QDir(doe_folder(rig)).entryList(QDir::Files), QStringList{"Doe_3.dat"});
        const QStringList lines = rig.lines(path);
        ASSERT_EQ(lines.size(), 26 + 6 + 1);
        EXPECT_EQ(lines.count(QStringLiteral("HeaderEnd")), 1);
        EXPECT_EQ(lines[26], QString("0.22;1;1;1; - ; - ; - ").replace('.', separator));

        CurveData curve;
        LoadCurveData2(path, curve, QLatin1Char(separator));
        EXPECT_DOUBLE_EQ(curve.threshold, 1.35);
        EXPECT_DOUBLE_EQ(curve.count_frequency, 50);
        EXPECT_EQ(curve.volume, (std::vector<double>{1.0, -0.004, 131.068, -131.068, 0, 1.2}));
        EXPECT_EQ(curve.session_time, (std::vector<double>{0.22, 0.24, 0.26, 0.28, 0.3, 0.38}));
        EXPECT_EQ(curve.balloon, (std::vector<uint8_t>{1, 1, 1, 1, 1, 4}));
        EXPECT_EQ(curve.patient_switch, (std::vector<uint8_t>{1, 1, 1, 1, 1, 0}));
        ASSERT_EQ(curve.time.size(), 6u);
        EXPECT_DOUBLE_EQ(curve.time[5], 0.1) << "frames, not the session's time";
    }
}

// Only the file's ending takes the moment: a data folder named like a curve file is ordinary.
TEST(CurveFile, a_new_session_whose_file_exists_keeps_it_and_takes_a_dated_name) {
    SessionRig rig;
    as_patient(rig.form, rig.app_data.path() + QStringLiteral("/site.dat"), QStringLiteral("3"));
    const QString folder = rig.form.data_directory + QStringLiteral("/Doe_Jane_A1");
    const QString old_path = folder + QStringLiteral("/Doe_3.dat");
    write(old_path, "an earlier run\r\n");
    rig.fakes.clock.when = QDateTime(QDate(2026, 11, 22), QTime(9, 5, 7));
    const QString dated = folder + QStringLiteral("/Doe_3_11_22_2026 09_05_07");
    // Back from a pause, the dated file goes on. Two more sessions of that id stamped at the
    // same moment once appended a second header to the dated file, and the review refused it
    // whole: each takes the next free name.
    const std::pair<const char*, int> recordings[] = {
        {".dat", 28}, {".dat", 29}, {"_2.dat", 28}, {"_3.dat", 28}};
    for (int k = 0; k < 4; ++k) {
        if (k >= 2) rig.form.record_file_created = false;
        rig.form.cmdRecord_Click();
        rig.frames(1);
        rig.form.cmdPause_Click();
        EXPECT_EQ(rig.form.record_filename, dated + recordings[k].first);
        EXPECT_EQ(rig.lines(rig.form.record_filename).size(), recordings[k].second) << k;
    }
    EXPECT_EQ(rig.lines(dated + ".dat").count(QStringLiteral("HeaderEnd")), 1);
    EXPECT_EQ(rig.lines(old_path), QStringList({"an earlier run", ""}));
}

// A file that is no curve file (515) leaves the curve alone; one that fails later empties it.
TEST(CurveFileReader, each_kind_of_bad_file_fails_with_its_number) {
    const QByteArray header =
        "CURVE_DATA_FILE_STAMP|HeaderStart|Threshold:1.20|Count Frequency:  50 |HeaderEnd|";
    struct Case { const char* name; QByteArray text; int error; std::vector<double> volume; };
    const Case cases[] = {
        {"another first line", "CURVE DATA|HeaderStart|HeaderEnd|0.02;1;1;1|", 515, {9}},
        {"no HeaderStart", "CURVE_DATA_FILE_STAMP|Header|T:1|C:50|HeaderEnd|", 515, {9}},
        {"no HeaderEnd", "CURVE_DATA_FILE_STAMP|HeaderStart|T:1|C:50|0.02;1;1;1|", 515, {9}},
        {"an empty file", "", 515, {9}},
        {"frame rate 0", "CURVE_DATA_FILE_STAMP|HeaderStart|T:1|C: 0|HeaderEnd|0.02;1;1;1|", 11,
         {}},
        {"three fields", header + "0.02;1;1;1|0.04;1;1|", 9, {}},
        {"volume not a number", header + "0.02;x;1;1|", 13, {}},
        {"balloon above a byte", header + "0.02;1;256;1|", 6, {}},
        {"switch below 0", header + "0.02;1;1;-1|", 6, {}}, {"no samples", header, 9, {}},
        {"lenient balloon and switch", header + "0.02;1;2x;junk|0.04;1.5;4; - ; - ; - \n", 0,
         {1, 1.5}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        SessionRig rig;
        CurveData curve;
        curve.volume = {9.0};
        try {
            LoadCurveData2(write(rig.app_data.path() + "/bad.dat", crlf(c.text)), curve, '.');
            EXPECT_EQ(c.error, 0);
            EXPECT_EQ(std::tuple(curve.balloon, curve.patient_switch),
                      std::tuple(std::vector<uint8_t>{2, 4}, std::vector<uint8_t>{0, 0}));
        } catch (const ZelError& e) {
            EXPECT_EQ(e.number, c.error);
            if (e.number == 515) {
                EXPECT_EQ(e.description,
                          rig.app_data.path() + "/bad.dat is not in the expected ZEL format.");
            }
        }
        EXPECT_EQ(curve.volume, c.volume);
    }
    CurveData curve;
    curve.volume = {1.0};
    LoadCurveData2(QStringLiteral("/nonexistent/file.dat"), curve, QLatin1Char('.'));
    EXPECT_EQ(curve.volume, std::vector<double>{1.0}) << "a missing file changes nothing";
}

// The history keeps one decimal, and a threshold exactly between two shows the even one.
TEST(SessionHistory, the_threshold_keeps_one_decimal_with_ties_to_the_even_digit) {
    const std::pair<float, const char*> cases[] = {
        {1.25f, "1.2"}, {1.35f, "1.4"}, {-1.25f, "-1.2"}, {1.26f, "1.3"}, {0.05f, "0.0"},
        {0.15f, "0.2"}, {10.0f, "10.0"}, {-0.04f, "0.0"}, {2.75f, "2.8"}};
    for (const auto& [thresh, text] : cases) {
        for (const char separator : {'.', ','}) {
            SessionRig rig;
            rig.fakes.locale.separator = QLatin1Char(separator);
            rig.form.thresh = thresh;
            rig.save(QStringLiteral("1"));
            EXPECT_EQ(read_profile_string(rig.path(), session_section(1), "Threshold", {}),
                      QString::fromLatin1(text).replace('.', QLatin1Char(separator)))
                << thresh;
        }
    }
}

// A numeric id suggests the next number; any other the same again.
TEST(SessionHistory, saves_make_and_replace_entries_ids_compare_exactly_and_the_next_follows) {
    SessionRig rig;
    EXPECT_FALSE(rig.form.checkIfSessionExists(QStringLiteral("1")));
    EXPECT_EQ(rig.next(), "1");
    EXPECT_EQ(read_total_sessions(rig.path()), 0);
    rig.save(QStringLiteral("7"));
    EXPECT_EQ(rig.contents(),
              "[" + session_section(1).toLatin1() + "]\r\nID= 7\r\nDate=" +
                  rig.fakes.locale.medium_date(QDate(2026, 3, 4)).toLatin1() + " at " +
                  rig.fakes.locale.medium_time(QTime(9, 5, 7)).toLatin1() +
                  crlf("|Threshold=1.4|Breath_Hold_Duration= 15|Trigger_on_Inhale=Inhale|"
                       "Number_of_breath_holds= 3|Gating Mode=Manual|[HEADER]|TOTAL_SESSIONS= 1|"));
    EXPECT_EQ(rig.form.session_id_saved, rig.path() + QStringLiteral("7"));
    rig.form.breath_holds = 5;
    rig.save(QStringLiteral("7"));
    EXPECT_EQ(read_total_sessions(rig.path()), 1);
    EXPECT_EQ(read_profile_string(rig.path(), session_section(1), "Number_of_breath_holds", {}),
              "5");
    EXPECT_EQ(rig.next(), "8");
    rig.save(QStringLiteral("Test"));
    EXPECT_EQ(rig.next(), "Test");
    rig.save(QStringLiteral("  41 "));
    EXPECT_EQ(rig.next(), "42");
    EXPECT_EQ(read_total_sessions(rig.path()), 3);
    EXPECT_EQ(read_session_id(rig.path(), 1), "7");
    EXPECT_EQ(read_session_id(rig.path(), 2), "Test");
    for (const auto& [id, exists] : {std::pair{"7", true}, std::pair{"Test", true},
                                     std::pair{"test", false}, std::pair{"8", false}})
        EXPECT_EQ(rig.form.checkIfSessionExists(QString::fromLatin1(id)), exists) << id;
    EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty());
}

// A failed save leaves the history as it was and is reported.
TEST(SessionHistory, a_failed_save_keeps_the_file_and_is_reported) {
    const std::pair<const char*, std::function<void(SessionRig&)>> cases[] = {
        // The last key can't be written: a line break would not read back.
        {"a value that would not read back",
         [](SessionRig& rig) { rig.form.gating_start_mode = "Auto\nmated"; }},
        // Found by fuzzing: at a count of 32767 the save wrote 32768, which no read takes, and
        // the whole history seemed gone.
        {"beyond the largest count", [](SessionRig& rig) {
             ASSERT_TRUE(write_profile_string(rig.path(), "HEADER", "TOTAL_SESSIONS", " 32767"));
         }},
        {"no folder", [](SessionRig& rig) { rig.form.patient_last_name = "Nobody"; }},
    };
    for (const auto& [name, spoil] : cases) {
        SCOPED_TRACE(name);
        SessionRig rig;
        rig.save(QStringLiteral("1"));
        spoil(rig);
        const QByteArray before = rig.contents();
        const QString saved = rig.form.session_id_saved;
        rig.save(QStringLiteral("2"));
        EXPECT_EQ(rig.contents(), before);
        EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(101)});
        EXPECT_EQ(rig.form.session_id_saved, saved);
        EXPECT_EQ(read_session_id(rig.path(), 1), "1");
    }
}

TEST(SessionHistory, a_count_beyond_the_sections_is_reported_and_the_search_goes_on) {
    SessionRig rig;
    rig.save(QStringLiteral("7"));
    ASSERT_TRUE(write_profile_string(rig.path(), "HEADER", "TOTAL_SESSIONS", " 3"));
    EXPECT_TRUE(rig.next().isEmpty());
    EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(102)});
    EXPECT_EQ(rig.fakes.boxes.styles, std::vector<int>{vbCritical});
    // Sections 2 and 3 are missing: two reports, and the one that exists is still found.
    EXPECT_FALSE(rig.form.checkIfSessionExists(QStringLiteral("9")));
    EXPECT_EQ(rig.fakes.boxes.shown.size(), 3);
    EXPECT_TRUE(rig.form.checkIfSessionExists(QStringLiteral("7")));
}

}  // namespace
}  // namespace zel::test
