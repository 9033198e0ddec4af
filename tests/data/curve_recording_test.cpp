// The curve file of a session: its header, and the Record and Pause buttons over its life.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "fakes/rig.h"
#include "language/messages.h"
#include "platform/qt_system.h"

namespace zel::test {
namespace {

struct RecordingRig : Rig {
    RecordingRig() {
        form.data_directory = app_data.path() + QStringLiteral("/patients");
        form.patient_last_name = QStringLiteral("Doe");
        form.patient_first_name = QStringLiteral("Jane");
        form.patient_medical_id = QStringLiteral("A1");
        form.session = QStringLiteral("3");
        form.thresh = 1.35f;
        form.duration = 15;
        form.inhale = true;
        form.patient_defined = true;
        form.cmdRecord.Enabled = true;
        QDir().mkpath(folder());
    }
    QString folder() const { return form.data_directory + QStringLiteral("/Doe_Jane_A1"); }
    QStringList lines(const QString& path) const {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) return {};
        QStringList out = QString::fromLatin1(file.readAll()).split(QStringLiteral("\r\n"));
        if (!out.isEmpty() && out.last().isEmpty()) out.removeLast();
        return out;
    }
    void frames(int n) {
        for (int k = 0; k < n; ++k) fakes.serial.receive(data_frame(0x06, 1, 250));
    }
};

TEST(CurveFile, header_lines_and_zones_byte_for_byte) {
    RecordingRig rig;
    rig.fakes.clock.when = QDateTime(QDate(2026, 3, 4), QTime(7, 8, 9));
    rig.form.printHeader(rig.folder() + QStringLiteral("/h.dat"));
    QFile file(rig.folder() + QStringLiteral("/h.dat"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray expected =
        "CURVE_DATA_FILE_STAMP\r\n"
        "HeaderStart\r\n"
        "Threshold:1.35\r\n"
        "Count Frequency:  50 \r\n"
        "Patient Last Name:          Doe\r\n"
        "Medical ID:   A1\r\n"
        "Date:         03-04-2026\r\n"
        "Time:         07:08:09\r\n"
        "Session Number:             3\r\n"
        "Breath Hold Duration:        15 \r\n"
        "Trigger on Inhale:          True\r\n"
        "\r\n"
        "[Key]\r\n"
        "Status\tBalloon Valve\r\n"
        "1\tdeflated\r\n"
        "2\tready to inflate at threshold (inhale)\r\n"
        "3\tready to inflate at threshold (exhale)\r\n"
        "4\tinflated\r\n"
        "5\tfault\r\n"
        "\r\n"
        "Status\tPatient Switch\r\n"
        "0\tDisabled\r\n"
        "1\tEnabled\r\n"
        "[Curve Data]\r\n"
        // "Patient Switch" fills its zone exactly: the next item goes one zone further.
        "Session Time  Volume (liters)             Balloon Valve Status        Patient Switch"
        "              Gating Mode   Gating Status Relay State\r\n"
        "HeaderEnd\r\n";
    const QByteArray actual = file.readAll();
    EXPECT_EQ(QString::fromLatin1(actual).split(QStringLiteral("\r\n")),
              QString::fromLatin1(expected).split(QStringLiteral("\r\n")));
}

TEST(CurveFile, record_pause_record_gives_one_file_one_header_and_a_gap_in_time) {
    RecordingRig rig;
    rig.frames(10);
    rig.form.cmdRecord_Click();
    EXPECT_FALSE(rig.form.cmdRecord.Enabled);
    EXPECT_TRUE(rig.form.cmdPause.Enabled);
    rig.frames(3);
    rig.form.cmdPause_Click();
    EXPECT_FALSE(rig.form.curve_file);
    rig.frames(5);  // not recorded, but counted
    rig.form.cmdRecord_Click();
    rig.frames(2);
    rig.form.cmdPause_Click();

    const QString path = rig.folder() + QStringLiteral("/Doe_3.dat");
    EXPECT_EQ(QDir(rig.folder()).entryList(QDir::Files), QStringList{QStringLiteral("Doe_3.dat")});
    const QStringList lines = rig.lines(path);
    ASSERT_EQ(lines.size(), 26 + 5);
    EXPECT_EQ(lines.count(QStringLiteral("HeaderEnd")), 1);
    QStringList times;
    for (const QString& line : lines.mid(26)) times.append(line.section(QLatin1Char(';'), 0, 0));
    EXPECT_EQ(times, (QStringList{"0.22", "0.24", "0.26", "0.38", "0.40"}));
    EXPECT_EQ(lines[26], QStringLiteral("0.22;1;1;1; - ; - ; - "));
}

TEST(CurveFile, a_new_session_whose_file_exists_keeps_it_and_takes_a_dated_name) {
    RecordingRig rig;
    const QString old_path = rig.folder() + QStringLiteral("/Doe_3.dat");
    {
        QFile old(old_path);
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
        old.write("an earlier run\r\n");
    }
    rig.fakes.clock.when = QDateTime(QDate(2026, 11, 22), QTime(9, 5, 7));
    rig.form.cmdRecord_Click();
    rig.frames(1);
    rig.form.cmdPause_Click();
    EXPECT_EQ(rig.lines(old_path), QStringList{QStringLiteral("an earlier run")});
    const QString dated = rig.folder() + QStringLiteral("/Doe_3_11_22_2026 09_05_07.dat");
    EXPECT_EQ(rig.form.record_filename, dated);
    const QStringList lines = rig.lines(dated);
    ASSERT_EQ(lines.size(), 27);
    EXPECT_EQ(lines[0], QStringLiteral("CURVE_DATA_FILE_STAMP"));

    // Back from the pause, the dated file goes on.
    rig.form.cmdRecord_Click();
    rig.frames(1);
    EXPECT_EQ(rig.lines(dated).size(), 28);
    rig.form.cmdPause_Click();

    // Two more sessions of that id stamped at the same moment once appended a second header to
    // the dated file, and the review refused it whole: each takes the next free name.
    for (const char* next : {"/Doe_3_11_22_2026 09_05_07_2.dat", "/Doe_3_11_22_2026 09_05_07_3.dat"}) {
        rig.form.record_file_created = false;
        rig.form.cmdRecord_Click();
        rig.frames(1);
        rig.form.cmdPause_Click();
        EXPECT_EQ(rig.form.record_filename, rig.folder() + QLatin1String(next));
        EXPECT_EQ(rig.lines(rig.form.record_filename).size(), 27) << next;
    }
    EXPECT_EQ(rig.lines(dated).size(), 28);
    EXPECT_EQ(rig.lines(dated).count(QStringLiteral("HeaderEnd")), 1);
    EXPECT_EQ(rig.lines(old_path), QStringList{QStringLiteral("an earlier run")});
}

// The machine's own general date: two recordings started within one minute are told apart.
TEST(CurveFile, the_systems_general_date_holds_the_seconds) {
    const QtLocale locale;
    const QDateTime first(QDate(2026, 11, 22), QTime(21, 5, 7));
    const QDateTime second = first.addSecs(1);
    const QString stamp = locale.general_date(first);
    EXPECT_EQ(stamp, locale.medium_date(first.date()) + QLatin1Char(' ') +
                         locale.medium_time(first.time()));
    EXPECT_TRUE(stamp.contains(QStringLiteral("07"))) << stamp.toStdString();
    EXPECT_NE(stamp, locale.general_date(second));
}

TEST(CurveFile, the_buttons_do_nothing_without_a_patient) {
    RecordingRig rig;
    rig.form.patient_defined = false;
    rig.form.cmdRecord_Click();
    EXPECT_FALSE(rig.form.bRecord);
    EXPECT_TRUE(rig.form.cmdRecord.Enabled);
    EXPECT_TRUE(QDir(rig.folder()).entryList(QDir::Files).isEmpty());
}

}  // namespace
}  // namespace zel::test
