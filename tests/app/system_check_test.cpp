// The system check window as the search and the status frames drive it.
#include <gtest/gtest.h>

#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

struct CheckRig : Rig {
    CheckRig() {
        fakes.serial.set_PortOpen(false);
        fakes.serial.ports(1);
        form.duration = 15;
        form.thresh = 1.2f;
        form.form13_open = true;
        form.form13.Form_Load();
        form.start_module_search();
    }
    void tick() { fakes.timers.get("Timer_module_connect").tick(); }
    FakeTimer& close_delay() { return fakes.timers.get("Timer_form13_close_delay"); }
    // What the window shows: connection, then per row caption, pass, fail, result.
    QString shown() const {
        const Form13& w = form.form13;
        QString text = w.Image_connected.Visible       ? QStringLiteral("connected")
                       : w.Image_not_connected.Visible ? QStringLiteral("not connected")
                                                       : QStringLiteral("no connection image");
        const Control* rows[][4] = {
            {&w.Label2, &w.Image_02_pass, &w.Image_02_fail, &w.Label_check_02},
            {&w.Label3, &w.Image_03_pass, &w.Image_03_fail, &w.Label_check_03},
            {&w.Label4, &w.Image_04_pass, &w.Image_04_fail, &w.Label_check_04},
            {&w.Label5, &w.Image_05_pass, &w.Image_05_fail, &w.Label_check_05},
        };
        for (const auto& row : rows) {
            text += QStringLiteral(" |");
            if (row[0]->Visible) text += QLatin1Char(' ') + row[0]->Caption;
            if (row[1]->Visible) text += QStringLiteral(" pass-image");
            if (row[2]->Visible) text += QStringLiteral(" fail-image");
            if (row[3]->Visible) text += QLatin1Char(' ') + row[3]->Caption;
        }
        return text;
    }
};

TEST(SystemCheck, a_flat_battery_fails_its_row_and_passes_once_the_level_rises) {
    CheckRig rig;
    rig.tick();  // opens the port and asks for a status frame
    rig.fakes.serial.receive(status_frame(103));
    rig.tick();
    EXPECT_EQ(rig.shown(), QStringLiteral("connected | Transducer: pass-image PASS"
                                          " | Battery: fail-image FAIL | Line: pass-image PASS"
                                          " | Balloon: pass-image PASS"));
    EXPECT_FALSE(rig.close_delay().Enabled() || rig.form.system_check_result);

    // The tests repeat at every tick: the level rises and the row turns to PASS by itself.
    rig.fakes.serial.receive(status_frame(104));
    EXPECT_FALSE(rig.close_delay().Enabled()) << "armed by the frame and not by the tick";
    rig.tick();
    EXPECT_EQ(rig.shown(), QStringLiteral("connected | Transducer: pass-image PASS"
                                          " | Battery: pass-image PASS | Line: pass-image PASS"
                                          " | Balloon: pass-image PASS"));
    EXPECT_TRUE(rig.close_delay().Enabled() && rig.form.system_check_result);
    EXPECT_EQ(rig.close_delay().Interval(), 2000);
    // A later failing tick does not stop the close already armed.
    rig.fakes.serial.receive(status_frame(103));
    rig.tick();
    EXPECT_TRUE(rig.close_delay().Enabled() && rig.form.system_check_result);

    rig.close_delay().tick();
    EXPECT_FALSE(rig.form.form13_open || rig.close_delay().Enabled());
    EXPECT_TRUE(rig.fakes.windows.log.contains(QStringLiteral("unload Form13")));
}

// Without a module, or once it is unplugged, only the not-connected image shows.
TEST(SystemCheck, without_a_module_shows_only_the_not_connected_image_and_stays_up) {
    CheckRig rig;
    for (int k = 0; k < 3; ++k) {
        rig.tick();
        EXPECT_EQ(rig.shown(), QStringLiteral("not connected | | | |")) << "tick " << k;
    }
    rig.fakes.serial.receive(status_frame(104, 170));  // line failing keeps the window up
    rig.tick();
    EXPECT_TRUE(rig.shown().contains(QStringLiteral("Line: fail-image FAIL")));
    rig.fakes.serial.set_PortOpen(false);  // unplugged: nothing more comes in
    rig.tick();
    EXPECT_EQ(rig.shown(), QStringLiteral("not connected | | | |"));
    EXPECT_FALSE(rig.close_delay().Enabled() || rig.form.system_check_result);
    EXPECT_TRUE(rig.form.form13_open);
}

}  // namespace
}  // namespace zel::test
