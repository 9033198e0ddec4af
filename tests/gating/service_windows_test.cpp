// The Help menu's windows: the gating system's service view and the About box with the
// module's live levels.
#include <gtest/gtest.h>

#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

TEST(GatingDiagnostics, each_status_letter_in_words_and_unknown_letters_leave_the_label) {
    struct Case { const char* status; QStringList words; };
    // Fast gating, permission, mode, relay link.
    const Case cases[] = {
        {"^O:?EL", {"Not Active", "Locked", "Enabled", "Relay Link Up"}},
        {"_C!?DU", {"Active", "Unlocked", "Disabled", "Relay Link Down"}},
        {"^X:?FL", {"Not Active", "Locked", "Fault", "Relay Link Up"}},
        {"#Q#?#Z", {"Not Active", "Locked", "Fault", "Relay Link Up"}},  // as they were
    };
    Rig rig;
    rig.fakes.windows.during(Window::Form_Gating, [&] {
        FormGating& g = *rig.form.form_gating;
        EXPECT_EQ(g.Label1.Caption, message_text(335));
        for (const auto& c : cases) {
            rig.fakes.tarrow.set_status(c.status);
            rig.fakes.timers.get("Timer_Tarrow_Diagnostics").tick();
            EXPECT_EQ((QStringList{g.Label_Comm.Caption, g.Label_Relay_Firmware.Caption}),
                      (QStringList{message_text(333), "R 1.02   "}));
            EXPECT_EQ((QStringList{g.Label_Fast_Gating.Caption, g.Label_Permission.Caption,
                                   g.Label_Mode.Caption, g.Label_Relay_Comm.Caption}),
                      c.words)
                << c.status;
        }
        EXPECT_EQ(g.Label_Relay_State.Caption, message_text(330)) << "the X of the third case";
        // Without the link each tick says so, empties the rest and tries again.
        rig.fakes.tarrow.connected_result = 1;
        rig.fakes.tarrow.calls.clear();
        rig.fakes.timers.get("Timer_Tarrow_Diagnostics").tick();
        EXPECT_EQ((QStringList{g.Label_Comm.Caption, g.Label_Mode.Caption, g.Label_DLL_version.Caption}),
                  (QStringList{message_text(334), "", ""}));
        EXPECT_EQ(rig.fakes.tarrow.calls, (QStringList{"Connected()", "Close()", "Open()"}));
        g.Done_Button_Click();
        EXPECT_FALSE(g.Timer_Tarrow_Diagnostics->Enabled());
        EXPECT_EQ(rig.fakes.tarrow.calls.back(), QStringLiteral("Close()"));
    });
    rig.form.Gating_Diagnostics_Click();
    EXPECT_EQ(rig.fakes.windows.log, QStringList{QStringLiteral("show Form_Gating")});
}

TEST(GatingDiagnostics, without_the_library_the_first_tick_is_an_unhandled_failure) {
    Rig rig;
    rig.fakes.tarrow.missing = true;
    rig.fakes.windows.during(Window::Form_Gating,
                             [&] { rig.fakes.timers.get("Timer_Tarrow_Diagnostics").tick(); });
    rig.form.Gating_Diagnostics_Click();
    EXPECT_EQ(rig.ended, QStringList{"1"});
    EXPECT_EQ(rig.fakes.boxes.shown.size(), 1);
    EXPECT_FALSE(rig.form.form_gating->Timer_Tarrow_Diagnostics->Enabled());
}

// The gating frame and its library's version only in a gated treatment; the levels of the
// last status frame, the vacuum to its rounding.
TEST(AboutBox, shows_the_levels_of_each_status_frame_while_open) {
    for (bool gated : {false, true}) {
        Rig rig;
        rig.form.Gated_Treatment = gated;
        rig.form.tarrow_DLL_firmware = QStringLiteral("1.0.0.7");
        rig.form.line_level = 12.345f;
        rig.form.battery_level = 11.5f;
        rig.fakes.windows.during(Window::Form10, [&] {
            Form10& about = *rig.form.form10;
            EXPECT_TRUE(rig.form.about_visible);
            EXPECT_EQ(about.Frame_gating.Visible, gated);
            EXPECT_EQ(about.Label_tarrow_dll.Caption, gated ? QStringLiteral("1.0.0.7") : QString());
            EXPECT_EQ((QStringList{about.line_voltage.Caption, about.battery_voltage.Caption}),
                      (QStringList{"12.35", "11.50"}));
            rig.fakes.serial.receive(status_frame(104, 171, 200, 51));
            EXPECT_EQ((QStringList{about.Label_pressure.Caption, about.Label_vacuum.Caption}),
                      (QStringList{"12.83", "1.88"}));  // 1.875 psi
            about.Done_Click(rig.form);
        });
        rig.form.About_Click();
        EXPECT_FALSE(rig.form.about_visible) << gated;
    }
}

}  // namespace
}  // namespace zel::test
