#include <gtest/gtest.h>

#include <QDir>

#include "app/zel_error.h"
#include "fakes/files.h"
#include "fakes/rig.h"
#include "link/data_packet.h"

namespace zel::test {
namespace {

QStringList checksum_logs(const Rig& rig) {
    return QDir(rig.form.AppDataPath + QStringLiteral("/LOG")).entryList(QDir::Files);
}

TEST(FrameReception, takes_one_frame_a_notification_and_costs_a_bad_one_no_more) {
    const QByteArray f = data_frame(0x04, 1, 250);
    const QByteArray bad = bad_sum(data_frame(0x04, 1, 10));
    struct Case {
        const char* name;
        std::vector<QByteArray> pieces;  // each followed by one notification; empty: only that
        int counted, waiting;            // after the pieces
        int counted_at_last, logs;       // after the driver's notifications until nothing waits
    };
    const Case cases[] = {
        {"whole", {f}, 1, 0, 1, 0},
        {"byte by byte", {f.mid(0, 1), f.mid(1, 1), f.mid(2, 1), f.mid(3, 1), f.mid(4, 1),
                          f.mid(5, 1), f.mid(6, 1), f.mid(7, 1)}, 1, 0, 1, 0},
        {"start alone", {f.left(1), f.mid(1)}, 1, 0, 1, 0},
        {"three pieces", {f.left(3), f.mid(3, 4), f.mid(7)}, 1, 0, 1, 0},
        {"half a frame stays open across an idle notification", {f.left(5), {}, f.mid(5)},
         1, 0, 1, 0},
        {"two frames at once", {f + f}, 1, 8, 2, 0},
        {"noise goes a byte a notification", {bytes({1, 2, 3}) + f}, 0, 10, 1, 0},
        {"a bad sum before counting has begun is not logged", {bad}, 0, 0, 0, 0},
        {"bad sums once counting has begun go to one log", {f, bad, bad}, 1, 0, 1, 1},
        // A stream joined mid-frame: a data byte of 131 opens a frame that fails its sum and
        // swallows the first 3 bytes of the next real one, whose rest is noise.
        {"a false start byte", {f, bytes({131, 0x04, 1, 0, 0}) + f + f}, 1, 13, 2, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Rig rig;
        for (const QByteArray& piece : c.pieces) rig.fakes.serial.receive(piece);
        EXPECT_EQ(rig.form.total_counts, c.counted);
        EXPECT_EQ(rig.fakes.serial.InBufferCount(), c.waiting);
        rig.fakes.serial.drain();
        EXPECT_EQ(rig.form.total_counts, c.counted_at_last);
        EXPECT_DOUBLE_EQ(rig.form.volume, c.counted_at_last ? 1.0 : 0.0);
        EXPECT_FALSE(rig.form.packet_found);
        EXPECT_EQ(checksum_logs(rig).size(), c.logs);
        EXPECT_EQ(rig.form.checksum_log_open, c.logs > 0);
    }
    Rig rig;
    rig.fakes.serial.receive(bytes({1, 2, 3}) + f);
    rig.fakes.serial.drain();
    EXPECT_EQ(rig.fakes.serial.notifications, 4);
}

TEST(FrameReception, a_bad_sum_is_logged_with_the_patient_and_its_bytes) {
    const QByteArray bad = bad_sum(data_frame(0x04, 1, 10));
    Rig rig;
    rig.form.patient_last_name = QStringLiteral("Doe"), rig.form.patient_medical_id = "M1";
    rig.fakes.serial.receive(data_frame());
    rig.form.module_heartbeat_counter = 1;
    rig.fakes.serial.receive(bad);
    rig.fakes.serial.receive(bad);
    EXPECT_EQ(rig.form.module_heartbeat_counter, 1);  // bad frames keep no link alive
    const QStringList logs = checksum_logs(rig);
    ASSERT_EQ(logs, QStringList{QStringLiteral("data checksum error 11_22_26_9_05_07.txt")});
    rig.form.close_run_files();
    QByteArray sums;
    for (char b : bad) sums += ' ' + QByteArray::number(static_cast<uint8_t>(b)) + ' ';
    const QByteArray entry = "22-Nov-26     09:05:07      Doe           M1             1 \r\n" +
                             sums + " \r\n" + QByteArray(54, '-') + "\r\n";
    EXPECT_EQ(contents(rig.form.AppDataPath + QStringLiteral("/LOG/") + logs[0]), entry + entry);
}

TEST(FrameReception, status_frames_set_the_detect_flag_only_when_their_sum_is_good) {
    Rig rig;
    rig.fakes.serial.receive(bad_sum(status_frame()));
    EXPECT_FALSE(rig.form.zel_detect);
    rig.form.module_heartbeat_counter = 2;
    rig.fakes.serial.receive(status_frame());
    EXPECT_TRUE(rig.form.zel_detect);
    EXPECT_EQ(rig.form.module_heartbeat_counter, 2);  // only data frames keep the link alive
}

TEST(FrameReception, a_nested_pass_during_a_dialog_handles_the_same_frame_again) {
    // A modal dialog opened inside the frame's handling runs the event loop, which enters the
    // handler again while the outer pass stands at the complete frame.
    Rig rig;
    rig.fakes.serial.receive(data_frame());
    rig.form.packet_found = true;  // as the outer pass leaves them before its last step
    rig.form.data_count = rig.form.packet_length;
    rig.fakes.serial.receive(QByteArray(1, '\x01'));
    EXPECT_EQ(rig.form.total_counts, 2);
    EXPECT_FALSE(rig.form.packet_found);
    EXPECT_EQ(rig.fakes.serial.InBufferCount(), 1);  // the filling loop was skipped
}

TEST(DataFrame, decodes_the_full_signed_volume_and_shows_the_time_left_upwards) {
    // Volume in units of 0.004 L, time left in frames of 0.02 s.
    struct Case {
        int16_t units; double litres; const char* shown;
        uint16_t frames; double seconds; const char* countdown; char separator = '.';
    };
    const Case cases[] = {
        {-1, -0.004, "0.00", 50, 1.0, "1"},          {0, 0.0, "0.00", 51, 1.02, "2"},
        {32767, 131.068, "131.07", 1, 0.02, "1"},    {-32767, -131.068, "-131.07", 0, 0.0, "0"},
        {250, 1.0, "1.00", 750, 15.0, "15"},         {-250, -1.0, "-1.00", 65535, 1310.7, "1311"},
        {256, 1.024, "1.02", 50, 1.0, "1"},          {125, 0.5, "0,50", 50, 1.0, "1", ','},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.shown);
        Rig rig;
        rig.fakes.locale.separator = QLatin1Char(c.separator);
        rig.fakes.serial.receive(data_frame(0x04, 1, c.units, c.frames));
        EXPECT_DOUBLE_EQ(rig.form.volume, c.litres);
        EXPECT_EQ(rig.form.volume_label.Caption, QStringLiteral("volume [L]:   ") + c.shown);
        EXPECT_NEAR(rig.form.ZEL_CM_duration, c.seconds, 1e-9);
        EXPECT_EQ(rig.form.countdown2.Caption, QString::fromLatin1(c.countdown));
    }
    EXPECT_THROW(decode_volume(0x80, 0x00), ZelError);  // the pattern with no magnitude
}

TEST(ElapsedTime, seconds_round_to_even_while_minutes_truncate) {
    struct Case { double counts; const char* text; };
    const Case cases[] = {
        {1, "0:0:0"}, {25, "0:0:0"}, {75, "0:0:2"},  // 0.02 s; 0.5 and 1.5 s go to the even
        {2980, "0:0:0"},  // 59.6 s: seconds round to 60, modulo 60, minutes still 0
        {3000, "0:1:0"}, {3025, "0:1:0"}, {179975, "0:59:0"},  // 3599.5 s rounds to 3600
        {180000, "1:0:0"}, {180000 * 25 + 50, "25:0:1"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(elapsed_text(c.counts, 50.0f), QString::fromLatin1(c.text)) << c.counts;
    Rig rig;
    for (int k = 0; k < 75; ++k) rig.fakes.serial.receive(data_frame());
    EXPECT_EQ(rig.form.elapsed_label.Caption, QStringLiteral("0:0:2"));
}

TEST(FaultLines, each_line_sets_its_flag_and_the_fault_state_once) {
    using Flags = std::array<bool, 4>;  // line, battery, pneumatic, transducer
    struct Case { uint8_t flags; Flags faults; };
    const Case cases[] = {
        // Healthy idle; the switch is no fault; bits 0 and 7 are not read.
        {0x04, {}}, {0x06, {}}, {0x85, {}},
        {0x00, {0, 0, 0, 1}}, {0x0C, {0, 0, 0, 1}}, {0x08, {0, 0, 0, 1}}, {0x24, {1, 0, 0, 0}},
        {0x14, {0, 1, 0, 0}}, {0x44, {0, 0, 1, 0}}, {0x70, {1, 1, 1, 1}},
    };
    for (const auto& c : cases) {
        Rig rig;
        rig.fakes.serial.receive(data_frame(c.flags));
        const Form1& f = rig.form;
        EXPECT_EQ((Flags{f.line_fault, f.battery_fault, f.pneumatic_fault, f.transducer_fault}),
                  c.faults) << int(c.flags);
        EXPECT_EQ(f.sw_state, c.faults == Flags{} ? 1 : 2) << int(c.flags);
    }
    // A standing flag raises nothing new; a cleared one clears whatever the fault state.
    Rig rig;
    rig.fakes.serial.receive(data_frame(0x24));
    rig.form.sw_state = 1;  // as if the fault state had ended
    rig.fakes.serial.receive(data_frame(0x24));
    EXPECT_EQ(rig.form.sw_state, 1);
    rig.form.sw_state = 2;
    rig.fakes.serial.receive(data_frame(0x04));
    EXPECT_FALSE(rig.form.line_fault);
}

TEST(AboutRefresh, asks_for_a_status_frame_every_fifty_frames) {
    Rig rig;
    rig.form.about_visible = true;
    std::vector<int> asked_at;
    for (int k = 0; k < 120; ++k) {
        rig.fakes.serial.clear_sent();
        rig.fakes.serial.receive(data_frame());
        if (rig.fakes.serial.sent() == "V") asked_at.push_back(k);
    }
    EXPECT_EQ(asked_at, (std::vector<int>{0, 50, 100}));
}

TEST(RecordingLine, joins_seven_fields_or_dashes_without_a_fresh_gating_status) {
    Rig rig;
    rig.form.total_counts = 151, rig.form.volume = 0.504;
    rig.form.b_state = 4, rig.form.patient_switch = true;
    EXPECT_EQ(rig.form.recording_line(), QStringLiteral("3.02;0.504;4;1; - ; - ; - "));

    struct Case { bool gated, overide; char enable, relay; const char* tail; };
    const Case cases[] = {
        {false, false, 'E', 'C', "Manual;-;-"}, {true, false, '?', '?', "Automated;;"},
        {true, true, 'D', 'O', "Manual Overide;Disabled;Open"},
        {true, false, 'F', 'o', "Automated;Fault;Opening"},
        {true, false, 'E', 'c', "Automated;Enabled;Closing"},
        {true, false, 'E', 'C', "Automated;Enabled;Closed"},
        {true, false, 'E', 'X', "Automated;Enabled;Opening Error"},
        {true, false, 'E', 'Y', "Automated;Enabled;Closing Error"},
        {true, false, 'E', 'U', "Automated;Enabled;Unknown"},
    };
    rig.fakes.locale.separator = QLatin1Char(',');
    for (const auto& c : cases) {
        rig.form.tarrowNewData = true;
        rig.form.Gated_Treatment = c.gated, rig.form.Gating_OverRide = c.overide;
        rig.form.tarrow_status.enable_state = c.enable;
        rig.form.tarrow_status.relay_state = c.relay;
        EXPECT_EQ(rig.form.recording_line(),
                  QStringLiteral("3,02;0,504;4;1;") + QString::fromLatin1(c.tail));
    }
}

}  // namespace
}  // namespace zel::test
