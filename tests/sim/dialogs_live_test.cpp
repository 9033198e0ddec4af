// The dialogs over a live module. From inside the settings dialogs the spacebar arms nothing
// and still stops a hold, and their Save sends nothing to the module while it holds; the
// About box's levels follow the module's.
#include <gtest/gtest.h>

#include "sim/live_console.h"

namespace zel::test {
namespace {

TEST(SettingsDialogsLive, arm_nothing_stop_a_hold_and_upload_nothing_during_it) {
    LiveConsole c(false);
    // Breathing crosses the threshold of 1.4 L.
    ASSERT_TRUE(c.sim.start(
        "breathing rest 1.0\nbreathing amplitude 0.8\nbreathing period 2.5\nwait 120\nquit\n"));
    // A patient whose file the dialogs' saves can write.
    as_patient(c.form, c.app_data.path(), QStringLiteral("1"));
    c.form.number_format = QStringLiteral("dot");
    ASSERT_TRUE(c.link_up());
    const struct { Window window; std::function<void()> open, cancel; } dialogs[] = {
        {Window::Form12, [&] { c.form.Patient_Settings_Click(); }, [&] { c.form.form12->Cancel_Click(); }},
        {Window::Form11, [&] { c.form.Control_Panel_Click(); }, [&] { c.form.form11->Cancel_Click(); }},
    };
    for (const auto& dialog : dialogs) {
        SCOPED_TRACE(static_cast<int>(dialog.window));
        QByteArray sent;
        c.fakes.windows.during(dialog.window, [&] {
            ASSERT_TRUE(c.run_until([&] { return c.ready_to_arm(); }, 8000));
            const size_t before = c.port.writes.size();
            c.form.Form_KeyDown(32, 0);
            c.wait(600);
            sent = c.written_since(before);
            EXPECT_EQ(c.form.b_state, 1);
            dialog.cancel();
        });
        dialog.open();
        EXPECT_FALSE(sent.contains('A') || sent.contains('B')) << sent.toStdString();
    }
    // A hold under way behind Patient Settings, as a module re-found in one would be: Save is
    // refused while it holds, the spacebar aborts it, and Save works once it has ended.
    QByteArray during_hold;
    size_t before_return = 0;
    c.fakes.windows.during(Window::Form12, [&] {
        ASSERT_TRUE(c.run_until([&] { return c.ready_to_arm(); }, 8000));
        c.form.send_command("A");
        ASSERT_TRUE(c.run_until([&] { return c.form.b_state == 4; }, 8000))
            << "no hold began: state " << c.form.b_state << ", module heard "
            << c.sim.commands().join(QLatin1Char(' ')).toStdString();
        Form12& f = *c.form.form12;
        f.type_text(f.Threshold_Text, QStringLiteral("1.6"), 3);
        f.key_press(f.Threshold_Text, 13);
        const size_t before = c.port.writes.size();
        f.Button_Save_Click();
        EXPECT_FALSE(f.unloaded);
        c.form.Form_KeyDown(32, 0);
        ASSERT_TRUE(c.run_until([&] { return c.form.b_state == 1; }, 5000)) << "not aborted";
        during_hold = c.written_since(before);
        f.Button_Save_Click();
        EXPECT_TRUE(f.unloaded);
        before_return = c.port.writes.size();
    });
    c.form.Patient_Settings_Click();
    EXPECT_EQ(during_hold, QByteArray("X"));
    EXPECT_FLOAT_EQ(c.form.thresh, 1.6f);
    EXPECT_TRUE(c.written_since(before_return).startsWith('L')) << "the upload after the hold";
}

TEST(AboutLive, the_levels_follow_the_module_while_the_box_is_open) {
    LiveConsole c(false);
    // The battery runs down and the pressure reservoir fills while the box is up: after the
    // stream has started, the first "V" is the box's own request for the levels.
    ASSERT_TRUE(c.sim.start("battery 9.0\npressure 10.0\nawait E\nawait V\nwait 1.5\n"
                            "battery 7.5\npressure 14.0\nwait 60\nquit\n"));
    ASSERT_TRUE(c.link_up()) << "the link never came up";
    QStringList batteries, pressures;  // each caption as it changed
    const auto note = [](QStringList& seen, const QString& now) {
        if (seen.isEmpty() || seen.back() != now) seen.append(now);
    };
    c.fakes.windows.during(Window::Form10, [&] {
        Form10& about = *c.form.form10;
        c.run_until([&] {
            note(batteries, about.battery_voltage.Caption);
            note(pressures, about.Label_pressure.Caption);
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
