#include "link/data_packet.h"

#include <gtest/gtest.h>

#include "app/zel_error.h"
#include "fakes/rig.h"

namespace zel::test {
namespace {

QByteArray raw_frame(uint8_t flags, uint8_t hi, uint8_t lo, uint8_t t_hi = 0, uint8_t t_lo = 0) {
    return with_checksum({131, flags, 1, hi, lo, t_hi, t_lo});
}

TEST(DataFrame, decodes_the_full_signed_volume_and_shows_the_time_left_upwards) {
    struct Case {
        uint8_t hi, lo; double litres; const char* label;
        uint8_t t_hi, t_lo; double seconds; const char* shown; char separator = '.';
    };
    const Case cases[] = {
        {0xFF, 0xFF, -0.004, "volume [L]:   0.00", 0x00, 0x32, 1.0, "1"},
        {0x00, 0x00, 0.0, "volume [L]:   0.00", 0x00, 0x33, 1.02, "2"},
        {0x7F, 0xFF, 131.068, "volume [L]:   131.07", 0x00, 0x01, 0.02, "1"},
        {0x80, 0x01, -131.068, "volume [L]:   -131.07", 0x00, 0x00, 0.0, "0"},
        {0x00, 0xFA, 1.0, "volume [L]:   1.00", 0x02, 0xEE, 15.0, "15"},
        {0xFF, 0x06, -1.0, "volume [L]:   -1.00", 0xFF, 0xFF, 1310.7, "1311"},
        {0x01, 0x00, 1.024, "volume [L]:   1.02", 0x00, 0x32, 1.0, "1"},
        {0x00, 0x7D, 0.5, "volume [L]:   0,50", 0x00, 0x32, 1.0, "1", ','},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        Rig rig;
        rig.fakes.locale.separator = QLatin1Char(c.separator);
        rig.fakes.serial.receive(raw_frame(0x04, c.hi, c.lo, c.t_hi, c.t_lo));
        EXPECT_DOUBLE_EQ(rig.form.volume, c.litres);
        EXPECT_EQ(rig.form.volume_label.Caption, QString::fromLatin1(c.label));
        EXPECT_NEAR(rig.form.ZEL_CM_duration, c.seconds, 1e-9);
        EXPECT_EQ(rig.form.countdown2.Caption, QString::fromLatin1(c.shown));
    }
    EXPECT_THROW(decode_volume(0x80, 0x00), ZelError);  // the pattern with no magnitude
}

TEST(ElapsedTime, seconds_round_to_even_while_minutes_truncate) {
    struct Case { double counts; const char* text; };
    const Case cases[] = {
        {1, "0:0:0"},        // 0.02 s
        {25, "0:0:0"},       // 0.5 s: a half goes to the even neighbour
        {75, "0:0:2"},       // 1.5 s
        {2980, "0:0:0"},     // 59.6 s: seconds round to 60, modulo 60, minutes still 0
        {3000, "0:1:0"},     {3025, "0:1:0"},  // 60.5 s
        {179975, "0:59:0"},  // 3599.5 s rounds to 3600
        {180000, "1:0:0"},   {180000 * 25 + 50, "25:0:1"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(elapsed_text(c.counts, 50.0f), QString::fromLatin1(c.text)) << c.counts;

    Rig rig;
    for (int k = 0; k < 75; ++k) rig.fakes.serial.receive(data_frame());
    EXPECT_EQ(rig.form.total_counts, 75);
    EXPECT_EQ(rig.form.counts, 75);
    EXPECT_EQ(rig.form.elapsed_label.Caption, QStringLiteral("0:0:2"));
}

TEST(FaultLines, each_line_sets_its_flag_and_the_fault_state_once) {
    using Flags = std::array<bool, 4>;  // line, battery, pneumatic, transducer
    struct Case { uint8_t flags; Flags faults; };
    const Case cases[] = {
        {0x04, {}},  // healthy idle frame
        {0x06, {}},  // the switch is no fault
        {0x85, {}},  // bits 0 and 7 are not read
        {0x00, {0, 0, 0, 1}}, {0x0C, {0, 0, 0, 1}}, {0x08, {0, 0, 0, 1}}, {0x24, {1, 0, 0, 0}},
        {0x14, {0, 1, 0, 0}}, {0x44, {0, 0, 1, 0}}, {0x70, {1, 1, 1, 1}},
    };
    for (const auto& c : cases) {
        Rig rig;
        rig.fakes.serial.receive(raw_frame(c.flags, 0, 0));
        const Form1& f = rig.form;
        EXPECT_EQ((Flags{f.line_fault, f.battery_fault, f.pneumatic_fault, f.transducer_fault}),
                  c.faults) << int(c.flags);
        EXPECT_EQ(f.sw_state, c.faults == Flags{} ? 1 : 2) << int(c.flags);
    }
    // A standing flag raises nothing new; a cleared one clears whatever the fault state.
    Rig rig;
    rig.fakes.serial.receive(raw_frame(0x24, 0, 0));
    rig.form.sw_state = 1;  // as if the fault state had ended
    rig.fakes.serial.receive(raw_frame(0x24, 0, 0));
    EXPECT_EQ(rig.form.sw_state, 1);
    rig.fakes.serial.receive(raw_frame(0x04, 0, 0));
    EXPECT_FALSE(rig.form.line_fault);
    rig.form.sw_state = 2;
    rig.fakes.serial.receive(raw_frame(0x24, 0, 0));
    rig.fakes.serial.receive(raw_frame(0x04, 0, 0));
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
    rig.form.total_counts = 151;
    rig.form.volume = 0.504;
    rig.form.b_state = 4;
    rig.form.patient_switch = true;
    EXPECT_EQ(rig.form.recording_line(), QStringLiteral("3.02;0.504;4;1; - ; - ; - "));

    struct Case { bool gated, overide; char enable, relay; const char* tail; };
    const Case cases[] = {
        {false, false, 'E', 'C', "Manual;-;-"}, {true, false, 'E', 'C', "Automated;Enabled;Closed"},
        {true, true, 'D', 'O', "Manual Overide;Disabled;Open"},
        {true, false, 'F', 'o', "Automated;Fault;Opening"},
        {true, false, 'E', 'c', "Automated;Enabled;Closing"},
        {true, false, 'E', 'X', "Automated;Enabled;Opening Error"},
        {true, false, 'E', 'Y', "Automated;Enabled;Closing Error"},
        {true, false, 'E', 'U', "Automated;Enabled;Unknown"},
        {true, false, '?', '?', "Automated;;"},
    };
    rig.fakes.locale.separator = QLatin1Char(',');
    for (const auto& c : cases) {
        rig.form.tarrowNewData = true;
        rig.form.Gated_Treatment = c.gated;
        rig.form.Gating_OverRide = c.overide;
        rig.form.tarrow_status.enable_state = c.enable;
        rig.form.tarrow_status.relay_state = c.relay;
        EXPECT_EQ(rig.form.recording_line(),
                  QStringLiteral("3,02;0,504;4;1;") + QString::fromLatin1(c.tail));
    }
}

}  // namespace
}  // namespace zel::test
