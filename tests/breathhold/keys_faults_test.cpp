#include <gtest/gtest.h>

#include "breathhold/key_guard.h"
#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

struct KeyRig : Rig {
    KeyRig() {
        form.patient_defined = true;
        form.b_state = 1;
    }
    void frame(uint8_t flags) { fakes.serial.receive(data_frame(flags, 1)); }
    void space() { form.Form_KeyDown(32, 0); }
};

TEST(Spacebar, acts_by_state_and_always_empties_the_abort_message_first) {
    struct Case {
        const char* name;
        int16_t b_state;
        int16_t sw_state;
        bool patient, in_region, enable_error;
        const char* sent;
        const char* label;
        const char* abort_by;
        int dialogs = 0;  // settings dialogs standing
    };
    const Case cases[] = {
        {"activate on inhale", 1, 1, true, false, false, "A", "Press spacebar to activate.", ""},
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
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        KeyRig rig;
        rig.form.abort_message = QStringLiteral("old abort ");
        rig.form.abort_by = QStringLiteral("user");
        rig.form.b_state = c.b_state;
        rig.form.sw_state = c.sw_state;
        rig.form.patient_defined = c.patient;
        rig.form.volume = c.in_region ? 1.5 : 0.0;
        rig.form.Gated_Treatment = rig.form.tarrow_Enable_error = c.enable_error;
        rig.form.gating_error_message = QStringLiteral("gating text");
        rig.form.settings_dialogs_open = c.dialogs;
        rig.form.Label2.Caption.clear();
        rig.space();
        EXPECT_TRUE(rig.form.abort_message.isEmpty());
        EXPECT_EQ(rig.fakes.serial.sent(), QByteArray(c.sent));
        EXPECT_EQ(rig.form.Label2.Caption, QString::fromLatin1(c.label));
        EXPECT_EQ(rig.form.abort_by, QString::fromLatin1(c.abort_by));
        // An abort in manual treatment raises the pause cue.
        EXPECT_EQ(rig.form.pause_cue_visible, c.b_state == 4);
        EXPECT_EQ(rig.fakes.timers.get("pauseBeamTimer").Enabled(), c.b_state == 4);
    }
}

TEST(Spacebar, arms_on_exhale_with_b_and_draws_the_box_below_the_threshold) {
    KeyRig rig;
    rig.form.inhale = false;
    rig.form.volume = 2.0;
    rig.space();
    EXPECT_EQ(rig.fakes.serial.sent(), "B");
    const auto& box = rig.fakes.chart.strokes.back();
    EXPECT_TRUE(box.is_box);
    EXPECT_EQ(box.y2, 2.0);
}

TEST(Spacebar, other_keys_and_a_closed_port_send_nothing) {
    KeyRig rig;
    rig.form.abort_message = QStringLiteral("old abort ");
    rig.form.Form_KeyDown(13, 0);
    EXPECT_EQ(rig.form.abort_message, QStringLiteral("old abort "));
    rig.fakes.serial.set_PortOpen(false);
    rig.space();
    EXPECT_EQ(rig.fakes.serial.sent(), "");
    // The prompt is still that of standby: the state changes with the module's frames.
    EXPECT_EQ(rig.form.Label2.Caption, QStringLiteral("Press spacebar to activate."));
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
        KeyRig rig;
        rig.form.distress_fault = c.distress;
        rig.form.abort_message = QString::fromLatin1(c.abort);
        rig.frame(c.flags);
        EXPECT_EQ(rig.form.Label2.Caption, QString::fromLatin1(c.text));
        EXPECT_EQ(rig.form.Label2.BackColor, (Rgb{255, 0, 0}));
        EXPECT_TRUE(rig.fakes.timers.get("Timer1").Enabled());
        EXPECT_FALSE(rig.form.load_existing_patient.Enabled);
        EXPECT_TRUE(rig.form.zel_exit.Enabled);
    }
}

// The label flashes red and window grey while the fault stands; when it goes the settings
// are sent again.
TEST(FaultSummary, a_fault_for_one_frame_goes_round_the_whole_circle) {
    KeyRig rig;
    rig.frame(0x24);
    EXPECT_EQ(rig.form.sw_state, 2);
    FakeTimer& flash = rig.fakes.timers.get("Timer1");
    EXPECT_EQ(flash.Interval(), 500);
    flash.tick();
    EXPECT_EQ(rig.form.Label2.BackColor, window_background);
    flash.tick();
    EXPECT_EQ(rig.form.Label2.BackColor, (Rgb{255, 0, 0}));
    rig.fakes.serial.clear_sent();
    rig.frame(0x04);
    EXPECT_EQ(rig.form.sw_state, 1);
    EXPECT_FALSE(rig.form.fault_mode_enabled || flash.Enabled());
    EXPECT_EQ(rig.form.Label2.BackColor, window_background);
    EXPECT_EQ(rig.form.Label2.Caption, QStringLiteral("Press spacebar to activate."));
    EXPECT_TRUE(rig.fakes.serial.sent().startsWith("L"));
    EXPECT_TRUE(rig.fakes.serial.sent().endsWith("1V"));
}

// The spacebar in a fault clears only the distress; a distress alone then ends with the
// next frame.
TEST(FaultSummary, a_distress_alone_ends_with_the_spacebar_and_the_next_frame) {
    KeyRig rig;
    for (const uint8_t flags : {0x06, 0x04, 0x06}) rig.frame(flags);
    ASSERT_TRUE(rig.form.distress_fault);
    rig.frame(0x04);
    EXPECT_EQ(rig.form.sw_state, 2);
    rig.form.line_fault = true;
    rig.space();
    EXPECT_FALSE(rig.form.distress_fault);
    EXPECT_TRUE(rig.form.line_fault);
    EXPECT_EQ(rig.fakes.serial.sent().right(1), "X") << "nothing sent by the spacebar";
    rig.form.line_fault = false;
    rig.frame(0x04);
    EXPECT_EQ(rig.form.sw_state, 1);
}

}  // namespace
}  // namespace zel::test
