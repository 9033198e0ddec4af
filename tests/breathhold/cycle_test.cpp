#include <gtest/gtest.h>

#include "breathhold/key_guard.h"
#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

// A patient is loaded and the link runs: the state in which holds are worked.
struct CycleRig : Rig {
    explicit CycleRig(bool gated = false) {
        form.patient_defined = true, form.b_state = 1, form.Gated_Treatment = gated;
    }
    // One frame of the module; time left in frames.
    void frame(uint8_t balloon, uint16_t time_left = 0, uint8_t flags = 0x06) {
        fakes.serial.receive(data_frame(flags, balloon, 0, time_left));
    }
    // A frame in standby with these switch and fault flags.
    void fault_frame(uint8_t flags) { fakes.serial.receive(data_frame(flags, 1)); }
    // Frames of a hold counting down from `from` to `to` frames left.
    void hold(int from, int to) {
        for (int k = from; k >= to; --k) frame(4, static_cast<uint16_t>(std::max(k, 0)));
    }
};

TEST(BalloonStateTable, each_row_moves_the_state_and_runs_its_actions) {
    // The prompt is Label2 afterwards ("" = untouched).
    struct Case { int16_t before; uint8_t reported; int16_t after; const char* prompt;
                  bool menus_locked, record_locked; Rgb countdown; int holds; bool redrawn; };
    const Rgb grey{192, 192, 192}, yellow{255, 255, 0}, none{224, 224, 224};
    const char* activate = "Press spacebar to activate.";
    const char* deactivate = "Press spacebar to deactivate.";
    const Case cases[] = {
        {0, 1, 1, "", false, false, grey, 0, false},
        {1, 1, 1, "", false, false, grey, 0, false},
        {5, 1, 1, "", false, false, grey, 0, false},
        {2, 1, 1, activate, false, false, grey, 0, true},
        {3, 1, 1, activate, false, false, grey, 0, true},
        {4, 1, 1, activate, false, false, grey, 0, true},
        {1, 2, 2, deactivate, true, true, none, 0, false},
        {3, 2, 2, "", true, true, none, 0, false},
        {1, 3, 3, deactivate, true, true, none, 0, false},
        {2, 3, 3, "", true, true, none, 0, false},
        {1, 4, 4, "Press spacebar to abort.", true, true, yellow, 1, false},
        {2, 4, 4, "Press spacebar to abort.", true, true, yellow, 1, false},
        {4, 4, 4, "", true, true, yellow, 0, false},
        {4, 5, 5, "", false, true, none, 0, false},
        {1, 5, 5, "", false, true, none, 0, false},
        {2, 7, 2, "", false, false, none, 0, false},
        {4, 0, 4, "", false, false, none, 0, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(QStringLiteral("%1 -> %2").arg(c.before).arg(c.reported).toStdString());
        CycleRig rig;
        rig.form.b_state = c.before;
        rig.form.pauseRecordDisabled = c.before >= 2 && c.before <= 5;
        rig.form.countdown2.BackColor = none;
        rig.frame(c.reported);
        EXPECT_EQ(rig.form.b_state, c.after);
        EXPECT_EQ(rig.form.Label2.Caption, QString::fromLatin1(c.prompt));
        EXPECT_EQ(!rig.form.load_existing_patient.Enabled, c.menus_locked);
        // Only a known state moves the record buttons' lock.
        EXPECT_EQ(rig.form.pauseRecordDisabled,
                  c.reported >= 1 && c.reported <= 5 ? c.record_locked : c.before >= 2);
        EXPECT_EQ(rig.form.countdown2.BackColor, c.countdown);
        EXPECT_EQ(rig.form.breath_holds, c.holds);
        EXPECT_EQ(rig.fakes.chart.clears > 0, c.redrawn);
    }
}

TEST(HoldEnd, a_hold_ended_with_time_left_names_who_ended_it) {
    struct Case { const char* abort_by; uint16_t frames_left; const char* text; };
    const Case cases[] = {
        {"user", 2, "Breath hold aborted by user.  Time remaining [sec]: 0.0. "},
        {"tarrow", 2, "Breath hold aborted by Tarrow fault.  Time remaining [sec]: 0.0. "},
        {"", 2, "Breath hold aborted by patient.  Time remaining [sec]: 0.0. "},
        {"", 1, "earlier textPress spacebar to activate."},  // 0.02 s left: a complete hold
        {"", 125, "Breath hold aborted by patient.  Time remaining [sec]: 2.5. "},
        {"other", 2, "earlier text"},
    };
    for (const auto& c : cases) {
        CycleRig rig;
        rig.frame(4, c.frames_left);
        rig.form.abort_by = QString::fromLatin1(c.abort_by);
        rig.form.abort_message = QStringLiteral("earlier text");
        rig.frame(1, 0);  // the end frame reads the time left of the frame before it
        EXPECT_EQ(rig.form.Label2.Caption, QString::fromLatin1(c.text))
            << c.abort_by << " " << c.frames_left;
    }
}

TEST(HoldEnd, a_fault_during_a_hold_leaves_its_text_and_the_relay_alone) {
    CycleRig rig(true);
    rig.frame(4, 300);
    rig.frame(5, 0);
    EXPECT_EQ(rig.form.b_state, 5);
    EXPECT_EQ(rig.form.abort_message,
              QStringLiteral("Breath hold aborted by fault condition.  Time remaining [sec]: 6.0. "));
    EXPECT_EQ(rig.fakes.tarrow.relay_calls(), QStringList{QStringLiteral("SetRelayState(1)")});
}

// A switch held closed is one closing; only closings count.
TEST(PatientSwitch, two_closings_within_fifty_frames_are_distress) {
    struct Case { int gap; uint8_t between; bool distress; int16_t toggles; };
    const Case cases[] = {
        {50, 0x04, true, 2}, {51, 0x04, false, 1}, {10, 0x04, true, 2}, {200, 0x06, false, 1}};
    for (const auto& c : cases) {
        CycleRig rig;
        rig.frame(1, 0, 0x06);  // first closing at frame 1
        for (int k = 1; k < c.gap; ++k) rig.frame(1, 0, c.between);
        rig.fakes.serial.clear_sent();
        rig.frame(1, 0, 0x06);  // second closing `gap` frames later
        EXPECT_EQ(rig.form.distress_fault, c.distress) << c.gap;
        EXPECT_EQ(rig.form.patient_switch_toggles, c.toggles) << c.gap;
        EXPECT_EQ(rig.fakes.serial.sent().contains('X'), c.distress) << c.gap;
        EXPECT_EQ(rig.form.sw_state, c.distress ? 2 : 1) << c.gap;
        EXPECT_EQ(rig.form.Label2.Caption.endsWith(message_text(138)), c.distress) << c.gap;
    }
}

TEST(RelayDuringHold, follows_the_hold_and_opens_in_its_last_half_second) {
    CycleRig rig(true);
    rig.form.counts = 27;  // the hold starts at counts 28; refreshes at 30, 60, 90
    rig.frame(4, 60);      // hold start: close
    rig.frame(4, 59);      // counts 29
    rig.frame(4, 58);      // counts 30: 59 frames (1.18 s) left from the frame before: close
    rig.hold(57, 28);      // counts 60: 0.58 s
    rig.hold(27, -2);      // to 90
    rig.frame(1, 0);       // end of the hold: open
    EXPECT_EQ(rig.fakes.tarrow.relay_calls(),
              (QStringList{"SetRelayState(1)", "SetRelayState(1)", "SetRelayState(1)",
                           "SetRelayState(0)", "SetRelayState(0)"}));
}

TEST(RelayDuringHold, is_never_moved_in_manual_or_overridden_treatment) {
    for (const bool gated : {false, true}) {
        CycleRig rig(gated);
        rig.form.Gating_OverRide = gated;
        rig.hold(100, 0);
        rig.frame(1, 0);
        EXPECT_TRUE(rig.fakes.tarrow.relay_calls().isEmpty());
    }
}

TEST(RelayDuringHold, after_a_link_loss_the_hold_is_not_closed_again) {
    CycleRig rig(true);
    rig.form.Recover_Comm_During_Gated_Treatment = true;
    rig.form.counts = 28;
    rig.frame(4, 200);  // counts 29: start, no close
    rig.frame(4, 199);  // counts 30: refresh, no close
    EXPECT_TRUE(rig.fakes.tarrow.relay_calls().isEmpty());
    rig.frame(1, 0);
    EXPECT_EQ(rig.fakes.tarrow.relay_calls(), QStringList{"SetRelayState(0)"});
    EXPECT_FALSE(rig.form.Recover_Comm_During_Gated_Treatment);
}

TEST(PauseCue, shows_under_four_seconds_and_for_four_seconds_after_the_hold) {
    CycleRig rig;
    FakeTimer& timer = rig.fakes.timers.get("pauseBeamTimer");
    rig.frame(4, 201);
    EXPECT_FALSE(rig.form.pause_cue_visible);
    rig.frame(4, 199);  // 3.98 s left
    EXPECT_TRUE(rig.form.pause_cue_visible);
    EXPECT_EQ((QStringList{rig.form.gating_label.Caption, rig.form.Label4.Caption}),
              (QStringList{"Pause", "Beam"}));
    EXPECT_EQ(rig.form.gating_label.BackColor, (Rgb{255, 255, 0}));
    rig.frame(1, 0);
    ASSERT_TRUE(timer.Enabled());
    timer.tick();
    EXPECT_FALSE(rig.form.pause_cue_visible || timer.Enabled());
    EXPECT_EQ((QStringList{rig.form.gating_label.Caption, rig.form.Label4.Caption}),
              (QStringList{"Manual", "Gating"}));
}

TEST(TarrowPoll, runs_every_twenty_five_counts_in_a_gated_treatment) {
    CycleRig rig(true);
    for (int k = 0; k < 100; ++k) rig.frame(1);
    EXPECT_EQ(rig.fakes.tarrow.calls.count(QStringLiteral("Connected()")), 4);
    EXPECT_EQ(rig.form.tarrow_DLL_firmware, QStringLiteral("1.0.0.7  "));
    EXPECT_TRUE(rig.form.tarrowNewData);
}

// Another key leaves the abort message; the spacebar always empties it first. A closed port
// sends nothing, and the prompt stays that of standby: the state changes with the frames.
TEST(Spacebar, acts_by_state_and_always_empties_the_abort_message_first) {
    struct Case {
        const char* name;
        int16_t b_state, sw_state;
        bool patient, in_region, enable_error;
        const char *sent, *label, *abort_by;
        int dialogs = 0;  // settings dialogs standing
        int key = 32;
        bool port_open = true;
    };
    const char* activate = "Press spacebar to activate.";
    const Case cases[] = {
        {"activate on inhale", 1, 1, true, false, false, "A", activate, ""},
        {"no patient", 1, 1, false, false, false, "", "Patient information not defined. Please "
                                                      "load or create patient.", "user"},
        {"in the region", 1, 1, true, true, false, "", "Activation Ignored. Volume in threshold "
                                                       "region.", "user"},
        {"gating not enabled", 1, 1, true, false, true, "", "gating text", "user"},
        {"deactivate", 2, 1, true, false, false, "X", "", "user"},
        {"deactivate on exhale", 3, 1, true, false, false, "X", "", "user"},
        {"abort", 4, 1, true, false, false, "X", "", "user"},
        {"state 5", 5, 1, true, false, false, "", "", "user"},
        {"state 0", 0, 1, true, false, false, "", "", "user"},
        {"fault", 1, 2, true, false, false, "", "", "user"},
        // A hold armed behind a settings dialog could be altered by its Save; one under way
        // is still stopped from there.
        {"behind a dialog", 1, 1, true, false, false, "", "", "user", 1},
        {"deactivate behind a dialog", 2, 1, true, false, false, "X", "", "user", 1},
        {"abort behind a dialog", 4, 1, true, false, false, "X", "", "user", 1},
        {"another key", 1, 1, true, false, false, "", "", "user", 0, 13},
        {"closed port", 1, 1, true, false, false, "", activate, "", 0, 32, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        CycleRig rig;
        Form1& f = rig.form;
        f.abort_message = QStringLiteral("old abort "), f.abort_by = QStringLiteral("user");
        f.b_state = c.b_state, f.sw_state = c.sw_state;
        f.patient_defined = c.patient;
        f.volume = c.in_region ? 1.5 : 0.0;
        f.Gated_Treatment = f.tarrow_Enable_error = c.enable_error;
        f.gating_error_message = QStringLiteral("gating text");
        f.settings_dialogs_open = c.dialogs;
        f.Label2.Caption.clear();
        rig.fakes.serial.set_PortOpen(c.port_open);
        f.Form_KeyDown(c.key, 0);
        EXPECT_EQ(f.abort_message, c.key == 32 ? "" : "old abort ");
        EXPECT_EQ(rig.fakes.serial.sent(), QByteArray(c.sent));
        EXPECT_EQ((QStringList{f.Label2.Caption, f.abort_by}), (QStringList{c.label, c.abort_by}));
        // An abort in manual treatment raises the pause cue.
        EXPECT_EQ(f.pause_cue_visible, c.b_state == 4);
        EXPECT_EQ(rig.fakes.timers.get("pauseBeamTimer").Enabled(), c.b_state == 4);
    }
}

TEST(Spacebar, arms_on_exhale_with_b_and_draws_the_box_below_the_threshold) {
    CycleRig rig;
    rig.form.inhale = false, rig.form.volume = 2.0;
    rig.form.Form_KeyDown(32, 0);
    EXPECT_EQ(rig.fakes.serial.sent(), "B");
    EXPECT_TRUE(rig.fakes.chart.strokes.back().is_box);
    EXPECT_EQ(rig.fakes.chart.strokes.back().y2, 2.0);
}

TEST(KeyGuard, swallows_the_combinations_that_switch_away) {
    struct Case { uint32_t key; bool alt, ctrl, swallowed; };
    const Case cases[] = {
        {vk_tab, true, false, true},          {vk_escape, true, false, true},
        {vk_escape, false, true, true},       {vk_left_windows, false, false, true},
        {vk_right_windows, false, false, false}, {vk_tab, false, false, false},
        {vk_tab, false, true, false},         {vk_escape, false, false, false},
        {0x20, true, true, false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(swallow_key(c.key, c.alt, c.ctrl), c.swallowed) << c.key << c.alt << c.ctrl;
}

TEST(FaultSummary, lists_the_standing_faults_in_fixed_order_after_a_blank) {
    struct Case { uint8_t flags; bool distress; const char* abort; const char* text; };
    const Case cases[] = {
        {0x24, true, "", " Line Fault. Distress Signal.  Press spacebar to clear."},
        {0x70, false, "", " Line Fault. Battery Fault. Transducer Fault. Balloon fault."},
        {0x14, false, "Breath hold aborted x. ", "Breath hold aborted x.  Battery Fault."},
        {0x00, false, "", " Transducer Fault."},
    };
    for (const auto& c : cases) {
        CycleRig rig;
        rig.form.distress_fault = c.distress, rig.form.abort_message = QString::fromLatin1(c.abort);
        rig.fault_frame(c.flags);
        EXPECT_EQ(rig.form.Label2.Caption, QString::fromLatin1(c.text));
        // Red and flashing; the patient menus shut, the exit open.
        EXPECT_TRUE(rig.form.Label2.BackColor == (Rgb{255, 0, 0}) &&
                    rig.fakes.timers.get("Timer1").Enabled());
        EXPECT_TRUE(!rig.form.load_existing_patient.Enabled && rig.form.zel_exit.Enabled);
    }
}

// The label flashes red and window grey while the fault stands; when it goes the settings
// are sent again.
TEST(FaultSummary, a_fault_for_one_frame_goes_round_the_whole_circle) {
    CycleRig rig;
    rig.fault_frame(0x24);
    EXPECT_EQ(rig.form.sw_state, 2);
    FakeTimer& flash = rig.fakes.timers.get("Timer1");
    EXPECT_EQ(flash.Interval(), 500);
    flash.tick();
    EXPECT_EQ(rig.form.Label2.BackColor, window_background);
    flash.tick();
    EXPECT_EQ(rig.form.Label2.BackColor, (Rgb{255, 0, 0}));
    rig.fakes.serial.clear_sent();
    rig.fault_frame(0x04);
    EXPECT_FALSE(rig.form.sw_state != 1 || rig.form.fault_mode_enabled || flash.Enabled());
    EXPECT_EQ(rig.form.Label2.BackColor, window_background);
    EXPECT_EQ(rig.form.Label2.Caption, QStringLiteral("Press spacebar to activate."));
    EXPECT_TRUE(rig.fakes.serial.sent().startsWith("L") && rig.fakes.serial.sent().endsWith("1V"));
}

// The spacebar in a fault clears only the distress; a distress alone then ends with the
// next frame.
TEST(FaultSummary, a_distress_alone_ends_with_the_spacebar_and_the_next_frame) {
    CycleRig rig;
    for (const uint8_t flags : {0x06, 0x04, 0x06}) rig.fault_frame(flags);
    ASSERT_TRUE(rig.form.distress_fault);
    rig.fault_frame(0x04);
    EXPECT_EQ(rig.form.sw_state, 2);
    rig.form.line_fault = true;
    rig.form.Form_KeyDown(32, 0);
    EXPECT_TRUE(!rig.form.distress_fault && rig.form.line_fault);
    EXPECT_EQ(rig.fakes.serial.sent().right(1), "X") << "nothing sent by the spacebar";
    rig.form.line_fault = false;
    rig.fault_frame(0x04);
    EXPECT_EQ(rig.form.sw_state, 1);
}

}  // namespace
}  // namespace zel::test
