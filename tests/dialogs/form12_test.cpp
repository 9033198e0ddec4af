// The Patient Settings dialog: what it takes, which warnings stand, when Save may be pressed,
// and what Save and Cancel leave in the console.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <memory>
#include <string>

#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

// A console with a patient in force, and the dialog opened on it.
struct DialogRig : Rig {
    std::unique_ptr<Form12> dialog;

    explicit DialogRig(QChar separator = QLatin1Char('.')) {
        fakes.locale.separator = separator;
        form.number_format =
            separator == QLatin1Char(',') ? QStringLiteral("comma") : QStringLiteral("dot");
        form.duration = 15;
        form.thresh = 1.2f;
        form.inhale = true;
        form.max_y = 2.0;
        form.min_y = -2.0;
        // The holding area of the file last read differs: the dialog must not take it.
        form.temp_duration = 30;
        form.temp_thresh = -3.0f;
    }
    Form12& open() {
        dialog = std::make_unique<Form12>(form);
        dialog->Form_Load();
        return *dialog;
    }
};

// Types the text over the field, then Enter.
void enter(Form12& f, TextBox& box, const QString& text) {
    f.type_text(box, text, static_cast<int>(text.size()));
    f.key_press(box, 13);
}

TEST(Form12, opens_on_the_live_values_with_save_off_and_the_gating_only_shown) {
    struct Case {
        bool gated, override_on, inhale;
        int automatic, manual, overide;
    };
    const Case cases[] = {
        {true, false, true, 1, 0, 0}, {false, false, false, 0, 1, 0}, {true, true, true, 1, 0, 1}};
    for (const Case& c : cases) {
        DialogRig rig;
        rig.form.Gated_Treatment = c.gated;
        rig.form.Gating_OverRide = c.override_on;
        rig.form.inhale = c.inhale;
        Form12& f = rig.open();
        EXPECT_EQ(f.BreathHold_Text.Text, QStringLiteral("15"));
        EXPECT_EQ(f.Threshold_Text.Text, QStringLiteral("1.2"));
        EXPECT_EQ(f.Threshold_Scroll.Value, 12);
        EXPECT_EQ(f.BreathHold_Scroll.Value, 15);
        EXPECT_EQ(f.Inhalation_button.Value, c.inhale ? 1 : 0);
        EXPECT_EQ(f.Exhalation_button.Value, c.inhale ? 0 : 1);
        EXPECT_EQ(f.Check_automatic.Value, c.automatic);
        EXPECT_EQ(f.Check_manual.Value, c.manual);
        EXPECT_EQ(f.Check_overide.Value, c.overide);
        for (Control* box : {&f.Check_automatic, &f.Check_manual, &f.Check_overide}) {
            EXPECT_FALSE(box->Enabled);
            f.click(*box);
        }
        EXPECT_EQ(f.Check_automatic.Value, c.automatic);
        EXPECT_FALSE(f.Button_Save.Enabled);
        EXPECT_FALSE(f.changes_made);
        EXPECT_EQ(f.Label_warning2.Caption, message_text(130));
        EXPECT_EQ(f.Caption, message_text(281));
        // With nothing changed, Cancel closes without asking and Save is out of reach.
        f.click(f.Button_Save);
        EXPECT_FALSE(f.unloaded);
        f.click(f.Cancel);
        EXPECT_TRUE(f.unloaded);
        EXPECT_TRUE(rig.form.patient_settings_cancel);
        EXPECT_FALSE(rig.fakes.windows.log.join('|').contains(QStringLiteral("ask")));
    }
}

TEST(Form12, breath_hold_entries_at_the_edges) {
    struct Case {
        const char* text;
        char separator;
        int message;
        float duration;
        const char* shown;
    };
    const Case cases[] = {
        {"99", '.', 0, 99, "99"},    {"1", '.', 0, 1, "1"},        {"98.6", '.', 0, 99, "99"},
        {"1.4", '.', 0, 1, "1"},     {"99.4", '.', 185, 15, "15"}, {"0.6", '.', 185, 15, "15"},
        {"-5", '.', 185, 15, "15"},  {"abc", '.', 186, 15, "15"},  {"1,5", '.', 186, 15, "15"},
        {"1.5", ',', 186, 15, "15"}, {"98,6", ',', 0, 99, "99"},
    };
    for (const Case& c : cases) {
        DialogRig rig{QLatin1Char(c.separator)};
        Form12& f = rig.open();
        enter(f, f.BreathHold_Text, QString::fromLatin1(c.text));
        EXPECT_EQ(f.Label_warningA.Caption, c.message ? message_text(c.message) : QString())
            << c.text;
        EXPECT_TRUE(f.Label_warningB.Caption.isEmpty()) << c.text;
        EXPECT_FLOAT_EQ(f.duration_temp, c.duration) << c.text;
        EXPECT_EQ(f.BreathHold_Text.Text, QString::fromLatin1(c.shown)) << c.text;
        EXPECT_EQ(f.duration_entry_pass, c.message == 0) << c.text;
        if (c.message == 0) {
            EXPECT_EQ(f.BreathHold_Scroll.Value, static_cast<int>(c.duration));
        }
        EXPECT_TRUE(f.Button_Save.Enabled) << c.text;
    }
}

TEST(Form12, threshold_entries_at_the_edges) {
    struct Case {
        const char* text;
        char separator;
        int message;
        float threshold;
        int bar;
    };
    const Case cases[] = {
        {"10.04", '.', 0, 10.0f, 100},    {"10.06", '.', 188, 1.2f, 12},
        {"-10.05", '.', 0, -10.0f, -100}, {"-10.06", '.', 188, 1.2f, 12},
        {"-10", '.', 0, -10.0f, -100},    {"0", '.', 0, 0.0f, 0},
        {"1.75", '.', 0, 1.8f, 18},       {"-1.75", '.', 0, -1.7f, -17},
        {"x", '.', 186, 1.2f, 12},        {"1,5", '.', 186, 1.2f, 12},
        {"1.5", ',', 186, 1.2f, 12},      {"1,5", ',', 0, 1.5f, 15},
        {".", '.', 186, 1.2f, 12},
    };
    for (const Case& c : cases) {
        DialogRig rig{QLatin1Char(c.separator)};
        Form12& f = rig.open();
        enter(f, f.Threshold_Text, QString::fromLatin1(c.text));
        EXPECT_EQ(f.Label_warningB.Caption, c.message ? message_text(c.message) : QString())
            << c.text;
        EXPECT_TRUE(f.Label_warningA.Caption.isEmpty()) << c.text;
        EXPECT_FLOAT_EQ(f.threshold_temp, c.threshold) << c.text;
        EXPECT_EQ(f.Threshold_Scroll.Value, c.bar) << c.text;
        EXPECT_EQ(f.thresh_entry_pass, c.message == 0) << c.text;
    }
}

// A corrected field keeps its warning while the other field's last entry failed.
TEST(Form12, the_two_warnings_are_cleared_in_pairs) {
    DialogRig rig;
    Form12& f = rig.open();
    const QString a = message_text(185), b = message_text(188);
    struct Step {
        TextBox* box;
        const char* text;
        QString warning_a, warning_b;
    };
    const Step steps[] = {
        {&f.BreathHold_Text, "120", a, {}}, {&f.Threshold_Text, "11", a, b},
        {&f.BreathHold_Text, "20", a, b},  // the threshold's last entry failed
        {&f.Threshold_Text, "2", a, {}},   // the duration's passed: B goes, A stays
        {&f.BreathHold_Text, "21", {}, {}},
    };
    for (const Step& s : steps) {
        enter(f, *s.box, QString::fromLatin1(s.text));
        EXPECT_EQ(f.Label_warningA.Caption, s.warning_a) << s.text;
        EXPECT_EQ(f.Label_warningB.Caption, s.warning_b) << s.text;
    }
}

TEST(Form12, save_follows_the_keys_and_the_difference_from_the_values_in_force) {
    DialogRig rig;
    Form12& f = rig.open();
    f.type_text(f.BreathHold_Text, QStringLiteral("2"), 1);
    f.key_press(f.BreathHold_Text, '2');
    EXPECT_FALSE(f.Button_Save.Enabled);
    // The value already in force, entered: Enter has enabled Save and nothing takes it back.
    f.type_text(f.BreathHold_Text, QStringLiteral("15"), 2);
    f.key_press(f.BreathHold_Text, 13);
    EXPECT_TRUE(f.Button_Save.Enabled);
    f.key_press(f.Threshold_Text, 'x');
    EXPECT_FALSE(f.Button_Save.Enabled);
    f.lost_focus(f.Threshold_Text);
    EXPECT_TRUE(f.Button_Save.Enabled);

    struct Case {
        bool inhale;
        Control Form12::*chosen;
        bool enabled;
    };
    const Case cases[] = {
        {true, &Form12::Exhalation_button, true},
        {false, &Form12::Inhalation_button, true},
    };
    for (const Case& c : cases) {
        DialogRig r;
        r.form.inhale = c.inhale;
        Form12& g = r.open();
        g.click(g.*c.chosen);
        EXPECT_EQ(g.Button_Save.Enabled, c.enabled);
        EXPECT_TRUE(g.changes_made);
    }
    struct Move {
        ScrollBar Form12::*bar;
        int value;
        const char* shown;
    };
    const Move moves[] = {{&Form12::BreathHold_Scroll, 16, "16"},
                          {&Form12::Threshold_Scroll, 13, "1.3"},
                          {&Form12::Threshold_Scroll, -5, "-0.5"}};
    for (const Move& m : moves) {
        DialogRig r;
        Form12& g = r.open();
        g.scroll(g.*m.bar, m.value);
        EXPECT_TRUE(g.Button_Save.Enabled) << m.shown;
        EXPECT_EQ((m.bar == &Form12::BreathHold_Scroll ? g.BreathHold_Text : g.Threshold_Text).Text,
                  QString::fromLatin1(m.shown));
    }
}

TEST(Form12, save_writes_the_values_and_widens_the_chart_in_both_directions) {
    struct Case {
        const char* threshold;
        double max_y;
        double widened;
    };
    const Case cases[] = {
        {"1.7", 2.0, 2.1},  {"-1.7", 2.0, 2.1},  {"1.5", 2.0, 2.0},
        {"-1.5", 2.0, 2.0}, {"-9.9", 2.0, 12.4}, {"0", 2.0, 2.0},
    };
    for (const Case& c : cases) {
        DialogRig rig;
        rig.form.max_y = c.max_y;
        rig.form.min_y = -c.max_y;
        rig.form.form12_open = true;
        Form12& f = rig.open();
        enter(f, f.Threshold_Text, QString::fromLatin1(c.threshold));
        enter(f, f.BreathHold_Text, QStringLiteral("20.5"));
        f.click(f.Exhalation_button);
        f.click(f.Button_Save);
        EXPECT_TRUE(f.unloaded);
        EXPECT_FALSE(rig.form.form12_open);
        EXPECT_FALSE(rig.form.patient_settings_cancel);
        EXPECT_FLOAT_EQ(rig.form.thresh, QString::fromLatin1(c.threshold).toFloat());
        EXPECT_DOUBLE_EQ(rig.form.duration, 21);
        EXPECT_FALSE(rig.form.inhale);
        EXPECT_DOUBLE_EQ(rig.form.max_y, c.widened) << c.threshold;
        EXPECT_DOUBLE_EQ(rig.form.min_y, -c.widened) << c.threshold;
    }
}

TEST(Form12, cancel_after_a_change_asks_before_the_changes_are_lost) {
    struct Case {
        int answer;
        bool closed;
    };
    for (const Case c : {Case{1, false}, Case{0, true}}) {
        DialogRig rig;
        rig.form.form12_open = true;
        Form12& f = rig.open();
        f.scroll(f.Threshold_Scroll, 20);
        rig.fakes.windows.answer(c.answer);
        f.click(f.Cancel);
        EXPECT_EQ(f.unloaded, c.closed);
        EXPECT_EQ(rig.form.patient_settings_cancel, c.closed);
        EXPECT_EQ(rig.form.form12_open, !c.closed);
        EXPECT_FLOAT_EQ(rig.form.thresh, 1.2f);
        EXPECT_TRUE(rig.fakes.windows.log.contains(QStringLiteral("ask ") + message_text(353)));
    }
}

// ---- The Patient Settings menu entry -------------------------------------------------------

struct MenuRig : DialogRig {
    QTemporaryDir data;
    MenuRig() {
        form.data_directory = data.path();
        form.patient_parameter_filestamp = QStringLiteral("ZEL Patient Parameter File");
        form.patient_last_name = QStringLiteral("Doe");
        form.patient_first_name = QStringLiteral("Jane");
        form.patient_medical_id = QStringLiteral("MR7");
        form.patient_defined = true;
        form.b_state = 1;
        QDir(data.path()).mkpath(QStringLiteral("Doe_Jane_MR7"));
    }
    QString zel_file() const { return data.path() + QStringLiteral("/Doe_Jane_MR7/Doe.zel"); }
};

TEST(PatientSettingsMenu, saves_and_uploads_only_what_the_dialog_saved) {
    struct Case {
        bool save;
        bool defined;
        bool written;
    };
    const Case cases[] = {{true, true, true}, {false, true, false}, {true, false, false}};
    for (const Case& c : cases) {
        MenuRig rig;
        rig.form.patient_defined = c.defined;
        rig.fakes.serial.set_PortOpen(true);
        rig.fakes.windows.during(Window::Form12, [&] {
            Form12& f = *rig.form.form12;
            EXPECT_TRUE(rig.form.form12_open);
            enter(f, f.Threshold_Text, QStringLiteral("1.7"));
            rig.fakes.windows.answer(0);  // discard the changes, when Cancel asks
            f.click(c.save ? f.Button_Save : f.Cancel);
        });
        rig.form.Patient_Settings_Click();
        EXPECT_EQ(rig.fakes.windows.log.first(), QStringLiteral("show Form12"));
        EXPECT_FALSE(rig.form.form12_open);
        EXPECT_EQ(QFile::exists(rig.zel_file()), c.written);
        EXPECT_EQ(rig.fakes.serial.sent().contains('T'), c.written);
        if (c.written) {
            QFile file(rig.zel_file());
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            EXPECT_TRUE(file.readAll().contains("Threshold:1.70\r\n"));
        }
    }
}

TEST(PatientSettingsMenu, an_override_taken_behind_the_dialog_shows_in_it) {
    MenuRig rig;
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
