#include <gtest/gtest.h>

#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

// A patient is loaded and the link runs: the state in which holds are worked.
struct CycleRig : Rig {
    CycleRig() {
        form.patient_defined = true;
        form.b_state = 1;
    }
    // One frame of the module; time left in frames.
    void frame(uint8_t balloon, uint16_t time_left = 0, uint8_t flags = 0x06, int16_t units = 0) {
        fakes.serial.receive(data_frame(flags, balloon, units, time_left));
    }
    FakeTimer& timer(const char* name) { return fakes.timers.get(name); }
};

TEST(BalloonStateTable, each_row_moves_the_state_and_runs_its_actions) {
    struct Case {
        int16_t before;
        uint8_t reported;
        int16_t after;
        const char* prompt;  // Label2 afterwards ("" = untouched)
        bool menus_locked;
        bool record_locked;
        Rgb countdown;
        int holds;
        bool redrawn;
    };
    const Rgb grey{192, 192, 192}, yellow{255, 255, 0}, none{224, 224, 224};
    const Case cases[] = {
        {0, 1, 1, "", false, false, grey, 0, false},
        {1, 1, 1, "", false, false, grey, 0, false},
        {5, 1, 1, "", false, false, grey, 0, false},
        {2, 1, 1, "Press spacebar to activate.", false, false, grey, 0, true},
        {3, 1, 1, "Press spacebar to activate.", false, false, grey, 0, true},
        {4, 1, 1, "Press spacebar to activate.", false, false, grey, 0, true},
        {1, 2, 2, "Press spacebar to deactivate.", true, true, none, 0, false},
        {3, 2, 2, "", true, true, none, 0, false},
        {1, 3, 3, "Press spacebar to deactivate.", true, true, none, 0, false},
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
        CycleRig rig;
        rig.form.b_state = c.before;
        rig.form.pauseRecordDisabled = c.before >= 2 && c.before <= 5;
        rig.form.countdown2.BackColor = none;
        const int clears_before = rig.fakes.chart.clears;
        rig.frame(c.reported);
        const auto where = QStringLiteral("%1 -> %2").arg(c.before).arg(c.reported).toStdString();
        EXPECT_EQ(rig.form.b_state, c.after) << where;
        EXPECT_EQ(rig.form.Label2.Caption, QString::fromLatin1(c.prompt)) << where;
        EXPECT_EQ(!rig.form.load_existing_patient.Enabled, c.menus_locked) << where;
        if (c.reported >= 1 && c.reported <= 5) {
            EXPECT_EQ(rig.form.pauseRecordDisabled, c.record_locked) << where;
        }
        EXPECT_EQ(rig.form.countdown2.BackColor, c.countdown) << where;
        EXPECT_EQ(rig.form.breath_holds, c.holds) << where;
        EXPECT_EQ(rig.fakes.chart.clears > clears_before, c.redrawn) << where;
    }
}

TEST(BalloonStateTable, an_armed_hold_runs_standby_armed_inflated_standby) {
    CycleRig rig;
    rig.form.Form_KeyDown(32, 0);
    EXPECT_EQ(rig.fakes.serial.sent(), "A");
    rig.frame(2);
    rig.frame(4, 750);
    for (int k = 749; k > 0; k -= 50) rig.frame(4, k);
    rig.frame(4, 1);
    rig.frame(1, 0);
    EXPECT_EQ(rig.form.b_state, 1);
    EXPECT_EQ(rig.form.breath_holds, 1);
    EXPECT_EQ(rig.form.Label2.Caption, QStringLiteral("Press spacebar to activate."));
    EXPECT_TRUE(rig.form.Patient_Settings.Enabled);
    EXPECT_TRUE(rig.form.cmdRecord.Enabled);
    EXPECT_FALSE(rig.form.cmdPause.Enabled);
}

TEST(HoldEnd, a_hold_ended_with_time_left_names_who_ended_it) {
    struct Case { const char* abort_by; uint16_t frames_left; const char* text; };
    const Case cases[] = {
        {"user", 2, "Breath hold aborted by user.  Time remaining [sec]: 0.0. "},
        {"tarrow", 2, "Breath hold aborted by Tarrow fault.  Time remaining [sec]: 0.0. "},
        {"", 2, "Breath hold aborted by patient.  Time remaining [sec]: 0.0. "},
        {"", 1, "Press spacebar to activate."},  // 0.02 s left: a complete hold
        {"", 125, "Breath hold aborted by patient.  Time remaining [sec]: 2.5. "},
        {"other", 2, "earlier text"},
    };
    for (const auto& c : cases) {
        CycleRig rig;
        rig.frame(4, c.frames_left);
        rig.form.abort_by = QString::fromLatin1(c.abort_by);
        rig.form.abort_message = QStringLiteral("earlier text");
        rig.frame(1, 0);  // the end frame reads the time left of the frame before it
        EXPECT_EQ(rig.form.Label2.Caption,
                  c.frames_left == 1 ? QStringLiteral("earlier textPress spacebar to activate.")
                                     : QString::fromLatin1(c.text))
            << c.abort_by << " " << c.frames_left;
    }
}

TEST(HoldEnd, a_fault_during_a_hold_leaves_its_text_and_the_relay_alone) {
    CycleRig rig;
    rig.form.Gated_Treatment = true;
    rig.frame(4, 300);
    rig.frame(5, 0);
    EXPECT_EQ(rig.form.b_state, 5);
    EXPECT_EQ(rig.form.abort_message,
              QStringLiteral("Breath hold aborted by fault condition.  Time remaining [sec]: 6.0. "));
    EXPECT_EQ(rig.fakes.tarrow.relay_calls(), QStringList{QStringLiteral("SetRelayState(1)")});
}

TEST(PatientSwitch, two_closings_within_fifty_frames_are_distress) {
    struct Case { int gap; bool distress; int16_t toggles; };
    const Case cases[] = {{50, true, 2}, {51, false, 1}, {10, true, 2}};
    for (const auto& c : cases) {
        CycleRig rig;
        rig.frame(1, 0, 0x06);  // first closing at frame 1
        for (int k = 1; k < c.gap; ++k) rig.frame(1, 0, 0x04);
        rig.fakes.serial.clear_sent();
        rig.frame(1, 0, 0x06);  // second closing `gap` frames later
        EXPECT_EQ(rig.form.distress_fault, c.distress) << c.gap;
        EXPECT_EQ(rig.form.patient_switch_toggles, c.toggles) << c.gap;
        EXPECT_EQ(rig.fakes.serial.sent().contains('X'), c.distress) << c.gap;
        if (c.distress) {
            EXPECT_EQ(rig.form.sw_state, 2);
            EXPECT_TRUE(rig.form.Label2.Caption.endsWith(message_text(138)));
        }
    }
}

TEST(PatientSwitch, a_switch_held_closed_is_one_closing_and_only_closings_count) {
    CycleRig rig;
    for (int k = 0; k < 200; ++k) rig.frame(1, 0, 0x06);
    EXPECT_EQ(rig.form.patient_switch_toggles, 1);
    EXPECT_TRUE(rig.form.patient_switch);
    rig.frame(1, 0, 0x04);
    EXPECT_FALSE(rig.form.patient_switch);
    EXPECT_EQ(rig.form.patient_switch_toggles, 1);
}

TEST(RelayDuringHold, follows_the_hold_and_opens_in_its_last_half_second) {
    CycleRig rig;
    rig.form.Gated_Treatment = true;
    rig.form.counts = 27;  // the hold starts at counts 28; refreshes at 30, 60, 90
    rig.frame(4, 60);      // hold start: close
    rig.frame(4, 59);      // counts 29
    rig.frame(4, 58);      // counts 30: 59 frames (1.18 s) left from the frame before: close
    for (int k = 57; k >= 28; --k) rig.frame(4, static_cast<uint16_t>(k));  // counts 60: 0.58 s
    for (int k = 27; k >= -2; --k) rig.frame(4, static_cast<uint16_t>(std::max(k, 0)));  // to 90
    rig.frame(1, 0);  // end of the hold: open
    EXPECT_EQ(rig.fakes.tarrow.relay_calls(),
              (QStringList{"SetRelayState(1)", "SetRelayState(1)", "SetRelayState(1)",
                           "SetRelayState(0)", "SetRelayState(0)"}));
}

TEST(RelayDuringHold, is_never_moved_in_manual_or_overridden_treatment) {
    for (const auto& [gated, overide] : {std::pair{false, false}, std::pair{true, true}}) {
        CycleRig rig;
        rig.form.Gated_Treatment = gated;
        rig.form.Gating_OverRide = overide;
        for (int k = 100; k >= 0; --k) rig.frame(4, static_cast<uint16_t>(k));
        rig.frame(1, 0);
        EXPECT_TRUE(rig.fakes.tarrow.relay_calls().isEmpty());
    }
}

TEST(RelayDuringHold, after_a_link_loss_the_hold_is_not_closed_again) {
    CycleRig rig;
    rig.form.Gated_Treatment = true;
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
    rig.frame(4, 201);
    EXPECT_FALSE(rig.form.pause_cue_visible);
    rig.frame(4, 199);  // 3.98 s left
    EXPECT_TRUE(rig.form.pause_cue_visible);
    EXPECT_EQ(rig.form.gating_label.Caption, QStringLiteral("Pause"));
    EXPECT_EQ(rig.form.Label4.Caption, QStringLiteral("Beam"));
    EXPECT_EQ(rig.form.gating_label.BackColor, (Rgb{255, 255, 0}));
    rig.frame(1, 0);
    EXPECT_TRUE(rig.timer("pauseBeamTimer").Enabled());
    rig.timer("pauseBeamTimer").tick();
    EXPECT_FALSE(rig.form.pause_cue_visible);
    EXPECT_FALSE(rig.timer("pauseBeamTimer").Enabled());
    EXPECT_EQ(rig.form.gating_label.Caption, QStringLiteral("Manual"));
    EXPECT_EQ(rig.form.Label4.Caption, QStringLiteral("Gating"));
}

TEST(TarrowPoll, runs_every_twenty_five_counts_in_a_gated_treatment) {
    CycleRig rig;
    rig.form.Gated_Treatment = true;
    for (int k = 0; k < 100; ++k) rig.frame(1);
    EXPECT_EQ(rig.fakes.tarrow.calls.count(QStringLiteral("Connected()")), 4);
    EXPECT_EQ(rig.form.tarrow_DLL_firmware, QStringLiteral("1.0.0.7  "));
    EXPECT_TRUE(rig.form.tarrowNewData);
}

TEST(TarrowPoll, a_missing_library_ends_gated_operation) {
    CycleRig rig;
    rig.form.Gated_Treatment = true;
    rig.fakes.tarrow.missing = true;
    for (int k = 0; k < 25; ++k) rig.frame(1);
    EXPECT_FALSE(rig.form.Gated_Treatment);
    EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(355)});
}

}  // namespace
}  // namespace zel::test
