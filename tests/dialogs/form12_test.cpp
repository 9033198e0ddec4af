// The Patient Settings dialog: which warnings stand, when Save may be pressed, and what Save
// and Cancel leave in the console.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "dialog_rig.h"

namespace zel::test {
namespace {

// It opens on the live values, not on the file last read; the gating is only shown, and
// Save is out of reach until something changes.
TEST(Form12, opens_on_the_live_values_with_save_off_and_the_gating_only_shown) {
    const struct {
        bool gated, override_on, inhale;
        // automatic, manual, override, inhalation, exhalation; the bars of duration and threshold
        std::vector<int> ticks;
    } rows[] = {{true, false, true, {1, 0, 0, 1, 0, 15, 12}},
                {false, false, false, {0, 1, 0, 0, 1, 15, 12}},
                {true, true, true, {1, 0, 1, 1, 0, 15, 12}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.gated + 2 * row.override_on);
        DialogRig rig;
        rig.form.Gated_Treatment = row.gated, rig.form.Gating_OverRide = row.override_on;
        rig.form.inhale = row.inhale;
        Form12& f = rig.open12();
        for (Control* box : {&f.Check_automatic, &f.Check_manual, &f.Check_overide}) {
            EXPECT_FALSE(box->Enabled);
            f.click(*box);
        }
        EXPECT_EQ((std::vector<int>{f.Check_automatic.Value, f.Check_manual.Value,
                                    f.Check_overide.Value, f.Inhalation_button.Value,
                                    f.Exhalation_button.Value, f.BreathHold_Scroll.Value,
                                    f.Threshold_Scroll.Value}),
                  row.ticks);
        EXPECT_EQ(f.BreathHold_Text.Text + '|' + f.Threshold_Text.Text, "15|1.2");
        EXPECT_FALSE(f.Button_Save.Enabled || f.changes_made);
        f.click(f.Button_Save);
        EXPECT_FALSE(f.unloaded);
    }
}

// A corrected field keeps its warning while the other field's last entry failed.
TEST(Form12, the_two_warnings_are_cleared_in_pairs) {
    DialogRig rig;
    Form12& f = rig.open12();
    const QString a = message_text(185), b = message_text(188);
    const struct { TextBox* box; const char* text; QStringList warnings; } steps[] = {
        {&f.BreathHold_Text, "120", {a, ""}}, {&f.Threshold_Text, "11", {a, b}},
        {&f.BreathHold_Text, "20", {a, b}},  // the threshold's last entry failed
        {&f.Threshold_Text, "2", {a, ""}},   // the duration's passed: B goes, A stays
        {&f.BreathHold_Text, "21", {"", ""}},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.text);
        enter(f, *step.box, QString::fromLatin1(step.text));
        EXPECT_EQ((QStringList{f.Label_warningA.Caption, f.Label_warningB.Caption}), step.warnings);
    }
}

// A trigger other than the one in force enables Save; Save writes the values and widens the
// chart for the threshold.
TEST(Form12, save_writes_the_values_and_widens_the_chart) {
    const struct { bool inhale; Control Form12::*chosen; } rows[] = {
        {true, &Form12::Exhalation_button}, {false, &Form12::Inhalation_button}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.inhale);
        DialogRig rig;
        rig.form.inhale = row.inhale, rig.form.form12_open = true;
        Form12& f = rig.open12();
        f.click(f.*row.chosen);
        enter(f, f.Threshold_Text, QStringLiteral("-1.7"));
        enter(f, f.BreathHold_Text, QStringLiteral("20.5"));
        f.click(f.Button_Save);
        EXPECT_FALSE(!f.unloaded || rig.form.form12_open || rig.form.patient_settings_cancel);
        EXPECT_EQ(console(rig.form), QStringLiteral("||||21|-1.7|%1|0|2.1|-2.1|0|0")
                                         .arg(int{!row.inhale}));
    }
}

// ---- The settings menu entries -----------------------------------------------------------------

// The link runs on under either dialog. System Settings writes a defined patient's file even
// when nothing changed, and redraws the chart; what Patient Settings' Save does with a defined
// patient is the workflow's, and neither Cancel nor a patient not defined writes or uploads.
TEST(SettingsMenus, write_the_patient_file_only_as_their_dialog_closed) {
    const struct { Window window; bool defined, written; int clears; } rows[] = {
        {Window::Form12, true, false, 0}, {Window::Form12, false, false, 0},
        {Window::Form11, true, true, 1},  {Window::Form11, false, false, 1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(row.window) << row.defined);
        DialogRig rig;
        rig.form.b_state = 1, rig.form.patient_defined = row.defined;
        rig.form.patient_last_name = "Doe", rig.form.patient_first_name = "Jane";
        rig.form.patient_medical_id = QStringLiteral("MR7");
        QDir(rig.data.path()).mkpath(QStringLiteral("Doe_Jane_MR7"));
        rig.fakes.serial.set_PortOpen(true);
        rig.form.Timer_HeartBeat->set_Enabled(true);
        bool shown = false;
        rig.fakes.windows.during(row.window, [&] {
            shown = rig.form.Timer_HeartBeat->Enabled();
            if (row.window == Window::Form11) return rig.form.form11->Cancel_Click();
            Form12& f = *rig.form.form12;
            EXPECT_TRUE(rig.form.form12_open);
            enter(f, f.Threshold_Text, QStringLiteral("1.7"));
            rig.fakes.windows.answer(0);  // discard the changes, when Cancel asks
            f.click(row.defined ? f.Cancel : f.Button_Save);
        });
        rig.menu(row.window);
        EXPECT_TRUE(shown && rig.form.Timer_HeartBeat->Enabled() && !rig.form.form12_open);
        EXPECT_EQ(QFile::exists(rig.data.path() + QStringLiteral("/Doe_Jane_MR7/Doe.zel")),
                  row.written);
        EXPECT_TRUE(rig.fakes.serial.sent().isEmpty());
        EXPECT_EQ(rig.fakes.chart.clears, row.clears);
    }
}

TEST(SettingsMenus, an_override_taken_behind_the_dialog_shows_in_it) {
    DialogRig rig;
    rig.form.Gated_Treatment = true;
    rig.fakes.windows.during(Window::Form12, [&] {
        rig.fakes.windows.press(Window::Form_OverRide_Enable, 1);  // manual
        rig.form.show_Form_OverRide_Enable();
        EXPECT_EQ(rig.form.form12->Check_overide.Value, 1);
        rig.fakes.windows.press(Window::Form_OverRide_Disable, 0);
        rig.form.show_Form_OverRide_Disable();
        EXPECT_EQ(rig.form.form12->Check_overide.Value, 0);
        rig.form.form12->click(rig.form.form12->Cancel);
    });
    rig.form.Patient_Settings_Click();
    EXPECT_FALSE(rig.form.form12_open);
}

}  // namespace
}  // namespace zel::test
