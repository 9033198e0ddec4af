// The settings dialogs over a live module: from inside them the spacebar arms nothing and
// still stops a hold, and their Save sends nothing to the module while it holds.
#include <gtest/gtest.h>

#include "sim/live_console.h"

namespace zel::test {
namespace {

QByteArray written_since(const LiveConsole& c, size_t from) {
    QByteArray bytes;
    for (size_t k = from; k < c.port.writes.size(); ++k) bytes += c.port.writes[k].second;
    return bytes;
}

TEST(SettingsDialogsLive, arm_nothing_stop_a_hold_and_upload_nothing_during_it) {
    LiveConsole c(false);
    // Breathing crosses the threshold of 1.4 L.
    ASSERT_TRUE(c.sim.start(
        "breathing rest 1.0\nbreathing amplitude 0.8\nbreathing period 2.5\nwait 120\nquit\n"));
    // A patient whose file the dialogs' saves can write.
    c.form.data_directory = c.app_data.path();
    c.form.number_format = QStringLiteral("dot");
    c.form.patient_last_name = QStringLiteral("Doe");
    c.form.patient_first_name = QStringLiteral("Jane");
    c.form.patient_medical_id = QStringLiteral("A1");
    ASSERT_TRUE(QDir().mkpath(c.app_data.filePath(QStringLiteral("Doe_Jane_A1"))));
    ASSERT_TRUE(c.link_up());
    const auto out_of_region = [&] {
        return c.form.b_state == 1 && !c.form.volume_in_threshold_region();
    };

    for (Window window : {Window::Form12, Window::Form11}) {
        QByteArray sent;
        c.fakes.windows.during(window, [&] {
            ASSERT_TRUE(c.run_until(out_of_region, 8000));
            const size_t before = c.port.writes.size();
            c.form.Form_KeyDown(32, 0);
            c.run_until([] { return false; }, 600);
            sent = written_since(c, before);
            EXPECT_EQ(c.form.b_state, 1);
            if (window == Window::Form12)
                c.form.form12->Cancel_Click();
            else
                c.form.form11->Cancel_Click();
        });
        if (window == Window::Form12)
            c.form.Patient_Settings_Click();
        else
            c.form.Control_Panel_Click();
        EXPECT_FALSE(sent.contains('A') || sent.contains('B'))
            << static_cast<int>(window) << ": " << sent.toStdString();
    }
    EXPECT_FALSE(c.sim.commands().contains(QStringLiteral("A")));
    EXPECT_TRUE(c.fakes.boxes.shown.isEmpty()) << c.fakes.boxes.shown.join(' ').toStdString();

    // A hold under way behind Patient Settings, as a module re-found in one would be: Save is
    // refused while it holds, the spacebar aborts it, and Save works once it has ended.
    QByteArray during_hold;
    size_t before_return = 0;
    c.fakes.windows.during(Window::Form12, [&] {
        ASSERT_TRUE(c.run_until(out_of_region, 8000));
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
        during_hold = written_since(c, before);
        f.Button_Save_Click();
        EXPECT_TRUE(f.unloaded);
        before_return = c.port.writes.size();
    });
    c.form.Patient_Settings_Click();
    EXPECT_EQ(during_hold, QByteArray("X"));
    EXPECT_FLOAT_EQ(c.form.thresh, 1.6f);
    EXPECT_TRUE(written_since(c, before_return).startsWith('L')) << "the upload after the hold";
}

}  // namespace
}  // namespace zel::test
