#include <gtest/gtest.h>

#include "app/zel_error.h"
#include "fakes/rig.h"
#include "language/messages.h"
#include "link/commands.h"

namespace zel::test {
namespace {

using namespace Qt::StringLiterals;
using Pair = std::array<uint8_t, 2>;

TEST(SettingsEncoding, threshold_duration_and_calibration_bytes_with_their_kept_quirks) {
    struct Case { float litres; uint8_t high, low; };
    const Case cases[] = {
        {0.5f, 0x00, 0x7D}, {1.0f, 0x00, 0xFA}, {-0.5f, 0xFF, 0x83}, {0.0f, 0x00, 0x00},
        {2.0f, 0x01, 0xF4}, {-1.0f, 0xFF, 0x06},
        {1.02f, 0x01, 0xFF},  // A = 255 rounds up into the high byte: sent 256 units too high
    };
    for (const auto& c : cases)
        EXPECT_EQ(encode_threshold(c.litres), (Pair{c.high, c.low})) << c.litres;
    EXPECT_THROW(encode_threshold(-5.12f), ZelError);  // negative with a zero low byte overflows
    // Ties go to the even neighbour.
    EXPECT_EQ((std::array{encode_duration(15), encode_duration(12.5), encode_duration(13.5)}),
              (std::array<uint8_t, 3>{0x0F, 12, 14}));
    EXPECT_EQ(encode_calibration(0.004f), (Pair{0x80, 0x00}));
    EXPECT_EQ(encode_calibration(0.0041f), (Pair{0x83, 0x33}));
}

TEST(StopModuleLink, sends_stop_and_suspends_both_link_timers_then_a_closed_port_gets_nothing) {
    Rig rig;
    rig.form.Timer_HeartBeat->set_Enabled(true);
    rig.form.stop_module_link();
    EXPECT_EQ(rig.fakes.serial.sent(), "D");
    EXPECT_FALSE(rig.form.Timer_HeartBeat->Enabled() || rig.form.Timer_module_connect->Enabled());
    rig.fakes.serial.set_PortOpen(false);
    rig.form.settings_confirm = false;
    rig.form.upload_settings();
    EXPECT_FALSE(rig.fakes.serial.sent() != "D" || rig.form.settings_confirm);
}

struct LinkRig : Rig {
    explicit LinkRig(bool open = false) {
        form.duration = 15, form.thresh = 1.2f;
        fakes.serial.set_PortOpen(open);
        fakes.serial.ports(3);
    }
    FakeTimer& connect() { return fakes.timers.get("Timer_module_connect"); }
    FakeTimer& heartbeat() { return fakes.timers.get("Timer_HeartBeat"); }
    // Ticks of the search, each after clearing what was sent.
    void tick_search(int ticks = 1) {
        for (int k = 0; k < ticks; ++k) {
            fakes.serial.clear_sent();
            connect().tick();
        }
    }
};

TEST(StatusFrame, converts_levels_and_judges_them_at_their_limits) {
    using Checks = std::array<bool, 3>;  // battery, line, pneumatics
    struct Case { uint8_t battery, line, pressure, vacuum; Checks ok; };
    const Case cases[] = {
        {104, 171, 200, 200, {1, 1, 1}}, {103, 171, 200, 200, {0, 1, 1}},
        {104, 170, 200, 200, {1, 0, 1}}, {104, 171, 0, 200, {1, 1, 0}},
        {104, 171, 200, 0, {1, 1, 0}},   {255, 255, 255, 255, {1, 1, 1}},
    };
    for (const auto& c : cases) {
        LinkRig rig(true);
        rig.fakes.serial.receive(status_frame(c.battery, c.line, c.pressure, c.vacuum));
        const Form1& f = rig.form;
        EXPECT_EQ((Checks{f.battery_check, f.line_check, f.pneumatics_check}), c.ok)
            << int(c.battery) << " " << int(c.line) << " " << int(c.pressure);
    }
    LinkRig rig(true);
    rig.fakes.serial.receive(status_frame(103, 170, 0, 255));
    EXPECT_FLOAT_EQ(rig.form.battery_level, 3.7389f);
    EXPECT_FLOAT_EQ(rig.form.line_level, 9.996f);
    EXPECT_FLOAT_EQ(rig.form.pressure_level, -1.875f);
    EXPECT_FLOAT_EQ(rig.form.vacuum_level, 16.875f);
    EXPECT_EQ(rig.form.zel_version_id, QStringLiteral("ZEL 3.1"));
    // The version text takes up to fifteen bytes, and always the first.
    QByteArray raw = status_frame().left(30);
    for (int k = 1; k <= 15; ++k) raw[k] = static_cast<char>('a' + k);
    rig.fakes.serial.receive(with_checksum(raw));
    EXPECT_EQ(rig.form.zel_version_id, QStringLiteral("bcdefghijklmnop"));
    raw[1] = raw[2] = 0;
    rig.fakes.serial.receive(with_checksum(raw));
    EXPECT_EQ(rig.form.zel_version_id, QString(QChar(0)));
}

TEST(StatusFrame, a_matching_echo_confirms_and_the_fourth_mismatch_in_a_row_stops_the_link) {
    for (float thresh : {1.2f, 0.0f}) {  // later frames are not compared
        LinkRig rig(true);
        rig.form.thresh = thresh;
        rig.fakes.serial.receive(status_frame(104, 171, 200, 200, 15, thresh));
        rig.fakes.serial.receive(status_frame(104, 171, 200, 200, 99));
        EXPECT_FALSE(rig.form.settings_confirm) << thresh;
        EXPECT_EQ(rig.form.settings_confirm_counter, 0) << thresh;
    }
    LinkRig rig(true);
    rig.form.Timer_HeartBeat->set_Enabled(true);
    for (int k = 1; k <= 3; ++k) {
        rig.fakes.serial.receive(status_frame(104, 171, 200, 200, 14));
        EXPECT_EQ(rig.form.settings_confirm_counter, k);
        EXPECT_EQ(rig.form.sw_state, 1);
    }
    rig.fakes.serial.receive(status_frame(104, 171, 200, 200, 14));
    EXPECT_EQ(rig.form.sw_state, 2);
    EXPECT_EQ(rig.form.Label2.Caption, message_text(294));
    EXPECT_FALSE(rig.form.Timer_HeartBeat->Enabled() || rig.form.Timer_module_connect->Enabled() ||
                 !rig.form.settings_confirm);
}

TEST(ModuleSearch, goes_from_cold_start_to_the_stream_in_three_ticks) {
    // A module found again during a hold is not sent X (start), only E.
    for (bool back_in_a_hold : {false, true}) {
        SCOPED_TRACE(back_in_a_hold);
        LinkRig rig;
        rig.form.b_state = back_in_a_hold ? 4 : 1;
        rig.form.Recover_Comm_During_Gated_Treatment = back_in_a_hold;
        rig.form.start_module_search();
        rig.tick_search();  // ports listed, first port opened, "V"
        EXPECT_EQ(rig.form.num_ports, 3);
        EXPECT_EQ(rig.fakes.serial.sent(), "V");
        EXPECT_EQ(rig.form.Label2.Caption, message_text(319));
        rig.fakes.serial.receive(status_frame(104, 171, 200, 200, 0, 0.0f));
        rig.form.settings_confirm_counter = 3;
        rig.tick_search();  // checks pass; thirteen setting bytes, then a request for the echo
        EXPECT_EQ(rig.fakes.serial.sent(),
                  bytes({'L', 15, 'T', 0x01, 0x2C, '+', 0x80, 0x00, '-', 0x80, 0x00, '1', 'V'}));
        EXPECT_EQ(rig.form.settings_confirm_counter, 0);
        rig.fakes.serial.receive(status_frame());
        rig.tick_search();  // confirmed: the link is up
        EXPECT_EQ(rig.fakes.serial.sent(), back_in_a_hold ? "E" : "XE");
        EXPECT_TRUE(!rig.connect().Enabled() && rig.heartbeat().Enabled());
        EXPECT_EQ(rig.fakes.serial.CommPort(), 1);
        EXPECT_EQ(rig.form.Recover_Comm_During_Gated_Treatment, back_in_a_hold);
    }
}

TEST(ModuleSearch, a_failed_check_names_the_faults_with_a_leading_blank) {
    LinkRig rig;
    rig.form.start_module_search();
    rig.tick_search();
    rig.fakes.serial.receive(status_frame(103, 171, 0, 200, 15, 1.2f, 0));
    rig.tick_search();
    EXPECT_EQ(rig.form.Label2.Caption,
              QStringLiteral(" Battery Fault. Transducer Fault. Balloon fault."));
    EXPECT_EQ(rig.fakes.serial.sent(), "V");
    EXPECT_EQ(rig.form.sw_state, 2);
}

TEST(ModuleSearch, walks_the_ports_one_a_tick_and_skips_those_in_use) {
    LinkRig rig;
    rig.fakes.serial.ports(20);
    rig.fakes.serial.fail_open(2);
    rig.form.start_module_search();
    rig.tick_search(3);
    EXPECT_EQ(rig.form.num_ports, 19);
    EXPECT_EQ(rig.form.port_list[1], 3);
    EXPECT_EQ(rig.form.ComPort, 4);
    LinkRig many;
    many.fakes.serial.ports(25);  // twenty usable ports fill the list
    many.form.enumerate_com_ports();
    EXPECT_EQ(many.form.num_ports, 20);
    EXPECT_EQ(many.form.port_list[19], 20);
}

TEST(ModuleSearch, a_port_the_user_may_not_open_is_told_once_and_the_search_goes_on) {
    LinkRig rig;
    rig.fakes.serial.ports(6);
    using Kind = PortRefusal::Kind;
    rig.fakes.serial.deny_open(2, {.kind = Kind::join_group, .device = "/dev/ttyUSB0", .group = "dialout"});
    rig.fakes.serial.deny_open(3, {.kind = Kind::ask_administrator, .device = "/dev/ttyUSB1", .owner = "root"});
    rig.fakes.serial.deny_open(4, {.kind = Kind::stale_lock, .device = "/dev/ttyACM0", .owner = "ann",
                                   .lock_file = "/run/lock/LCK..ttyACM0", .pid = 4321});
    rig.fakes.serial.deny_open(5, {.kind = Kind::held_by_program, .device = "/dev/ttyS0",
                                   .program = "minicom", .pid = 777});
    rig.fakes.serial.fail_open(6);  // held, and nothing tells by whom: nothing to tell
    rig.form.start_module_search();
    rig.tick_search(9);  // several passes over the ports
    EXPECT_EQ(rig.fakes.boxes.notices,
              (QStringList{message_text(357).arg("/dev/ttyUSB0", "dialout"),
                           message_text(358).arg("/dev/ttyUSB1", "root"),
                           message_text(359).arg("/dev/ttyACM0", "/run/lock/LCK..ttyACM0", "4321", "ann"),
                           message_text(360).arg("/dev/ttyS0", "minicom", "777")}));
    EXPECT_TRUE(rig.fakes.boxes.notices[0].contains(u"add the user to the group that owns it (dialout)"_s));
    EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty() && rig.connect().Enabled());
    EXPECT_EQ(rig.form.num_ports, 1);
    EXPECT_EQ(rig.form.Label2.Caption, message_text(319));
}

// After a cut the module is found again by its status frame, and the link is up with "E".
// A data frame that comes before any status frame ends the fault state and uploads the settings
// ("L"), yet the next tick, still without a status frame, closes and reopens the port: what was
// in flight then is lost by design, and only "E" says the module was found.
TEST(ModuleSearch, after_a_cut_the_status_frame_first_takes_every_frame_and_a_data_frame_first_loses_the_reopen) {
    for (const bool status_first : {true, false}) {
        SCOPED_TRACE(status_first);
        LinkRig rig(true);
        rig.heartbeat().set_Enabled(true);
        rig.heartbeat().tick();
        rig.heartbeat().tick();  // the link is lost; the search begins
        ASSERT_TRUE(rig.connect().Enabled());
        rig.tick_search();  // a port opened, "V"
        const double counted = rig.form.total_counts;
        if (status_first) {
            rig.fakes.serial.receive(status_frame());
            for (int k = 0; k < 5; ++k) rig.fakes.serial.receive(data_frame());
            rig.tick_search();  // the checks pass: the settings go up
            rig.fakes.serial.receive(status_frame());  // and are confirmed
            for (int k = 0; k < 5; ++k) rig.fakes.serial.receive(data_frame());
            rig.tick_search();
            EXPECT_EQ(rig.fakes.serial.sent(), "XE");
            EXPECT_EQ(rig.form.total_counts, counted + 10);
        } else {
            rig.fakes.serial.clear_sent();
            rig.fakes.serial.receive(data_frame());
            EXPECT_TRUE(rig.fakes.serial.sent().startsWith('L'));
            for (int k = 0; k < 3; ++k) rig.fakes.serial.arrive(data_frame());  // in flight
            rig.tick_search();
            rig.fakes.serial.drain();
            EXPECT_EQ(rig.form.total_counts, counted + 1);
            EXPECT_TRUE(!rig.fakes.serial.sent().contains('E') && rig.connect().Enabled());
        }
    }
}

// A command that did not leave (the "X" of the spacebar) loses the link at once, without
// waiting for the heartbeat.
TEST(Heartbeat, a_second_silent_tick_loses_the_link_and_in_a_hold_opens_the_relay_or_cues_a_pause) {
    struct Case { const char* what; bool gated; int16_t b_state; int frames; QStringList relay;
                  bool unsent = false; };
    const Case cases[] = {
        {"idle, frames between ticks", false, 1, 2, {}},
        {"gated hold", true, 4, 0, {"SetRelayState(0)"}}, {"manual hold", false, 4, 0, {}},
        {"gated hold, a command unsent", true, 4, 0, {"SetRelayState(0)"}, true},
        {"manual hold, a command unsent", false, 4, 0, {}, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        LinkRig rig(true);
        rig.form.Gated_Treatment = c.gated;
        rig.form.b_state = c.b_state;
        rig.form.Timer_HeartBeat->set_Enabled(true);
        for (int k = 0; k < c.frames; ++k) {
            rig.fakes.serial.receive(data_frame(0x04, 1, 0, 100));
            rig.heartbeat().tick();
            EXPECT_TRUE(rig.fakes.serial.PortOpen());
        }
        rig.form.pneumatic_fault = rig.form.line_fault = true;
        const int clears = rig.fakes.chart.clears;
        rig.fakes.serial.fail_writes = c.unsent;
        if (c.unsent) {
            EXPECT_FALSE(rig.form.send_command("X"));
        } else {
            rig.heartbeat().tick();
            if (c.frames == 0) rig.heartbeat().tick();
        }
        EXPECT_FALSE(rig.fakes.serial.PortOpen() || !rig.connect().Enabled() ||
                     rig.heartbeat().Enabled());
        EXPECT_TRUE(rig.form.countdown2.Caption.isEmpty() && rig.form.settings_confirm);
        // The beam must stop at once; a manual hold is paused instead.
        EXPECT_EQ(rig.fakes.tarrow.relay_calls(), c.relay);
        EXPECT_EQ(rig.form.Recover_Comm_During_Gated_Treatment, c.gated);
        const bool manual_hold = !c.gated && c.b_state == 4;
        EXPECT_EQ(rig.form.pause_cue_visible, manual_hold);
        EXPECT_EQ(rig.fakes.timers.get("pauseBeamTimer").Enabled(), manual_hold);
        EXPECT_EQ(std::pair(rig.form.b_state, rig.fakes.chart.clears), std::pair(int16_t(1), clears + 1));
        // A link loss leaves the pneumatic fault standing and clears the line's.
        EXPECT_TRUE(rig.form.pneumatic_fault && !rig.form.line_fault);
    }
}

}  // namespace
}  // namespace zel::test
