// The About box open over a running link: the levels it shows follow the module's.
#include <gtest/gtest.h>

#include "sim/live_console.h"

namespace zel::test {
namespace {

TEST(AboutLive, the_levels_follow_the_module_while_the_box_is_open) {
    LiveConsole c(false);
    // The battery runs down and the pressure reservoir fills while the box is up: after the
    // stream has started, the first "V" is the box's own request for the levels.
    ASSERT_TRUE(c.sim.start("battery 9.0\npressure 10.0\nawait E\nawait V\nwait 1.5\n"
                            "battery 7.5\npressure 14.0\nwait 60\nquit\n"));
    ASSERT_TRUE(c.link_up()) << "the link never came up";
    QStringList batteries, pressures;
    c.fakes.windows.during(Window::Form10, [&] {
        Form10& about = *c.form.form10;
        c.run_until([&] {
            if (batteries.isEmpty() || batteries.back() != about.battery_voltage.Caption)
                batteries.append(about.battery_voltage.Caption);
            if (pressures.isEmpty() || pressures.back() != about.Label_pressure.Caption)
                pressures.append(about.Label_pressure.Caption);
            return batteries.size() >= 2 && pressures.size() >= 3;
        }, 12000);
        about.Done_Click(c.form);
    });
    c.form.About_Click();
    // The 9 V the box opened with (the search's status frames had it), then 7.5 V, to the
    // step of the module's counts.
    ASSERT_EQ(batteries.size(), 2) << batteries.join(' ').toStdString();
    EXPECT_NEAR(batteries.front().toDouble(), 9.0, 0.04) << batteries.join(' ').toStdString();
    EXPECT_NEAR(batteries.back().toDouble(), 7.5, 0.04) << batteries.join(' ').toStdString();
    EXPECT_EQ(pressures.front(), QString()) << "empty until the first status frame";
    ASSERT_GE(pressures.size(), 3) << pressures.join(' ').toStdString();
    EXPECT_NEAR(pressures.back().toDouble(), 14.0, 0.1) << pressures.join(' ').toStdString();
    EXPECT_FALSE(c.form.about_visible);
    // One "V" a second asked the levels while the box stood.
    EXPECT_GE(c.sim.commands().count(QStringLiteral("V")), 4);
}

}  // namespace
}  // namespace zel::test
