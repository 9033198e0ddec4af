// The Create New Patient dialog: what the operator may enter, what Done refuses, and what
// reaches the console.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <memory>
#include <string>

#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

// A console with a data directory, and the dialog opened on it.
struct DialogRig : Rig {
    QTemporaryDir data;
    std::unique_ptr<Form5> dialog;
    QStringList sessions_on_file;  // what the session history holds
    QStringList next_id_asked;     // the names get_next_sessionID was asked with

    explicit DialogRig(bool session_mode = false, QChar separator = QLatin1Char('.')) {
        fakes.locale.separator = separator;
        form.number_format =
            separator == QLatin1Char(',') ? QStringLiteral("comma") : QStringLiteral("dot");
        form.data_directory = data.path();
        // Set by the console's start, as every constant of the design.
        form.patient_parameter_filestamp = QStringLiteral("ZEL Patient Parameter File");
        form.duration = 15;
        form.thresh = 1.2f;
        form.inhale = true;
        form.max_y = 2.0;
        form.min_y = -2.0;
        form.new_patient_loading = session_mode;
        form.temp_patient_last_name = QStringLiteral("Doe");
        form.temp_patient_first_name = QStringLiteral("Jane");
        form.temp_patient_medical_id = QStringLiteral("MR77");
        form.temp_duration = 20;
        form.temp_thresh = -0.8f;
        form.temp_trigger = QStringLiteral("False");
        form.temp_gating = QStringLiteral("True");
    }
    Form5& open() {
        dialog = std::make_unique<Form5>(form);
        dialog->get_next_sessionID = [this](const QString& last, const QString& first,
                                            const QString& id) {
            next_id_asked = {last, first, id};
            return QStringLiteral("4");
        };
        dialog->checkIfSessionExists = [this](const QString& id) {
            return sessions_on_file.contains(id);
        };
        dialog->Form_Load();
        return *dialog;
    }
    // A patient folder with its parameter file, as the patient files write it.
    void patient_on_disk(const QString& folder, const QString& file, const QString& medical_id,
                         const QString& stamp = QStringLiteral("ZEL Patient Parameter File")) {
        QDir(data.path()).mkpath(folder);
        QFile out(data.path() + QLatin1Char('/') + folder + QLatin1Char('/') + file);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        out.write((stamp + "\r\n3.00.01\r\nPatient Last Name:X\r\nPatient First Name:Y\r\n" +
                   "Patient Medical ID:" + medical_id + "\r\nDate:1/2/2026\r\n")
                      .toLatin1());
    }
};

// Types the text over the field's whole content, the caret at its end.
void type(Form5& f, TextBox& box, const QString& text) {
    f.type_text(box, text, static_cast<int>(text.size()));
}

void fill_valid_patient(Form5& f) {
    type(f, f.Text_last_name, QStringLiteral("Smith"));
    type(f, f.Text_first_name, QStringLiteral("Ann"));
    type(f, f.Text_medical_id, QStringLiteral("MR1"));
    f.click(f.Check_manual);
}

// ---- Load -------------------------------------------------------------------------------------

TEST(Form5Load, new_patient_mode_shows_the_console_values_and_session_one) {
    DialogRig rig;
    Form5& f = rig.open();
    EXPECT_EQ(f.Caption, message_text(281));
    EXPECT_EQ(f.button_done.Caption, QStringLiteral("Save"));
    EXPECT_EQ(f.BreathHold_Text.Text, QStringLiteral("15"));
    EXPECT_EQ(f.BreathHold_Scroll.Value, 15);
    EXPECT_EQ(f.Threshold_Text.Text, QStringLiteral("1.2"));
    EXPECT_EQ(f.Threshold_Scroll.Value, 12);
    EXPECT_EQ(f.Check_Inhalation.Value, 1);
    EXPECT_EQ(f.check_Exhalation.Value, 0);
    EXPECT_EQ(f.Text_session.Text, QStringLiteral("1"));
    EXPECT_EQ(f.temp1, QStringLiteral("1"));
    EXPECT_EQ(f.Check_automatic.Value + f.Check_manual.Value, 0);
    EXPECT_FALSE(f.changes_made);
    EXPECT_TRUE(f.Text_last_name.Enabled);
    EXPECT_TRUE(f.Threshold_Scroll.Enabled);
}

TEST(Form5Load, the_threshold_shows_in_the_pattern_with_a_bare_separator) {
    struct Case {
        float thresh;
        QChar separator;
        const char* shown;
        int scroll;
    };
    const Case cases[] = {
        {1.0f, '.', "1.", 10},
        {0.5f, '.', ".5", 5},
        {0.0f, '.', ".", 0},
        // A single rounds from its own decimal form: 0.35 is not the 0.3499... of a double.
        {0.35f, '.', ".4", 4},
        {-2.5f, '.', "-2.5", -25},
        {1.0f, ',', "1,", 10},
        {10.0f, '.', "10.", 100},
    };
    for (const auto& c : cases) {
        DialogRig rig(false, c.separator);
        rig.form.thresh = c.thresh;
        Form5& f = rig.open();
        EXPECT_EQ(f.Threshold_Text.Text, QLatin1String(c.shown)) << c.thresh;
        EXPECT_EQ(f.Threshold_Scroll.Value, c.scroll) << c.thresh;
    }
}

TEST(Form5Load, session_mode_leaves_only_the_session_editable) {
    DialogRig rig(true);
    Form5& f = rig.open();
    EXPECT_EQ(f.button_done.Caption, QStringLiteral("Done"));
    const Control* disabled[] = {&f.Text_last_name,   &f.Text_first_name,   &f.Text_medical_id,
                                 &f.Check_automatic,  &f.Check_manual,      &f.BreathHold_Text,
                                 &f.Threshold_Text,   &f.BreathHold_Scroll, &f.Threshold_Scroll,
                                 &f.Check_Inhalation, &f.check_Exhalation};
    for (const Control* c : disabled) EXPECT_FALSE(c->Enabled);
    EXPECT_TRUE(f.Text_session.Enabled);
    EXPECT_EQ(rig.next_id_asked,
              QStringList({QStringLiteral("Doe"), QStringLiteral("Jane"), QStringLiteral("MR77")}));
    EXPECT_EQ(f.Text_session.Text, QStringLiteral("4"));
    EXPECT_EQ(f.Text_session.SelStart, 1);
    EXPECT_EQ(f.Text_last_name.Text, QStringLiteral("Doe"));
    EXPECT_EQ(f.Text_medical_id.Text, QStringLiteral("MR77"));
    EXPECT_EQ(f.Check_automatic.Value, 1);
    EXPECT_EQ(f.Check_manual.Value, 0);
    EXPECT_EQ(f.check_Exhalation.Value, 1);
    EXPECT_EQ(f.BreathHold_Text.Text, QStringLiteral("20"));
    EXPECT_EQ(f.Threshold_Text.Text, QStringLiteral("-.8"));
    EXPECT_FALSE(f.changes_made);
}

// ---- Numeric fields ---------------------------------------------------------------------------

TEST(Form5BreathHold, the_range_is_tested_before_the_rounding) {
    struct Case {
        const char* typed;
        const char* shown;
        int16_t kept;
        int message;
    };
    // 0 for no message; the field goes back to the kept value when refused.
    const Case cases[] = {
        {"99", "99", 99, 0},     {"1", "1", 1, 0},       {"98.6", "99", 99, 0},
        {"1.4", "1", 1, 0},      {"2.5", "3", 3, 0},     {" 7 ", "7", 7, 0},
        {"99.4", "15", 15, 185}, {"0.6", "15", 15, 185}, {"100", "15", 15, 185},
        {"-3", "15", 15, 185},   {"abc", "15", 15, 186}, {"1,5", "15", 15, 186},
        {".", "15", 15, 186},    {"1e1", "10", 10, 0},
    };
    for (bool by_enter : {true, false}) {
        for (const auto& c : cases) {
            DialogRig rig;
            Form5& f = rig.open();
            type(f, f.BreathHold_Text, QLatin1String(c.typed));
            if (by_enter)
                f.key_press(f.BreathHold_Text, 13);
            else
                f.lost_focus(f.BreathHold_Text);
            EXPECT_EQ(f.BreathHold_Text.Text, QLatin1String(c.shown)) << c.typed;
            EXPECT_EQ(f.duration_temp, c.kept) << c.typed;
            EXPECT_EQ(f.BreathHold_Scroll.Value, c.kept) << c.typed;
            EXPECT_EQ(f.Label_message.Caption, c.message ? message_text(c.message) : QString())
                << c.typed;
            EXPECT_TRUE(f.button_done.Enabled) << c.typed;
        }
    }
}

TEST(Form5Threshold, the_rounding_comes_before_the_range_test) {
    struct Case {
        const char* typed;
        const char* shown;
        float kept;
        int scroll;
        int message;
    };
    const Case cases[] = {
        {"10.04", "10", 10.0f, 100, 0},     {"10", "10", 10.0f, 100, 0},
        {"10.06", "1.2", 1.2f, 12, 188},    {"10.05", "1.2", 1.2f, 12, 188},
        {"-10.05", "-10", -10.0f, -100, 0}, {"-10.06", "1.2", 1.2f, 12, 188},
        {"-10", "-10", -10.0f, -100, 0},    {"0", "0", 0.0f, 0, 0},
        {"0.35", "0.4", 0.4f, 4, 0},        {"-0.25", "-0.2", -0.2f, -2, 0},
        {"1.", "1", 1.0f, 10, 0},           {".5", "0.5", 0.5f, 5, 0},
        {"1,5", "1.2", 1.2f, 12, 186},      {".", "1.2", 1.2f, 12, 186},
        {"x1", "1.2", 1.2f, 12, 186},
    };
    for (const auto& c : cases) {
        DialogRig rig;
        Form5& f = rig.open();
        type(f, f.Threshold_Text, QLatin1String(c.typed));
        f.key_press(f.Threshold_Text, 13);
        EXPECT_EQ(f.Threshold_Text.Text, QLatin1String(c.shown)) << c.typed;
        EXPECT_FLOAT_EQ(f.threshold_temp, c.kept) << c.typed;
        EXPECT_EQ(f.Threshold_Scroll.Value, c.scroll) << c.typed;
        EXPECT_EQ(f.Label_message.Caption, c.message ? message_text(c.message) : QString())
            << c.typed;
    }
}

TEST(Form5Threshold, a_comma_machine_takes_the_comma_and_refuses_the_point) {
    struct Case {
        const char* typed;
        const char* shown;
        int message;
    };
    const Case cases[] = {{"1,5", "1,5", 0}, {"1.5", "1,2", 186}, {"-0,25", "-0,2", 0}};
    for (const auto& c : cases) {
        DialogRig rig(false, QLatin1Char(','));
        Form5& f = rig.open();
        type(f, f.Threshold_Text, QLatin1String(c.typed));
        f.lost_focus(f.Threshold_Text);
        EXPECT_EQ(f.Threshold_Text.Text, QLatin1String(c.shown)) << c.typed;
        EXPECT_EQ(f.Label_message.Caption, c.message ? message_text(c.message) : QString())
            << c.typed;
    }
}

TEST(Form5NumericFields, any_key_but_enter_holds_done_until_the_field_is_tested) {
    DialogRig rig;
    Form5& f = rig.open();
    f.key_press(f.Threshold_Text, '5');
    EXPECT_FALSE(f.button_done.Enabled);
    f.key_press(f.Threshold_Text, 13);
    EXPECT_TRUE(f.button_done.Enabled);
    f.key_press(f.BreathHold_Text, 8);  // backspace
    EXPECT_FALSE(f.button_done.Enabled);
    f.lost_focus(f.BreathHold_Text);
    EXPECT_TRUE(f.button_done.Enabled);
}

TEST(Form5NumericFields, an_emptied_field_is_left_empty_and_done_keeps_the_old_value) {
    DialogRig rig;
    Form5& f = rig.open();
    fill_valid_patient(f);
    type(f, f.BreathHold_Text, QString());
    f.key_press(f.BreathHold_Text, 13);
    type(f, f.Threshold_Text, QString());
    f.lost_focus(f.Threshold_Text);
    EXPECT_TRUE(f.BreathHold_Text.Text.isEmpty());
    EXPECT_TRUE(f.Label_message.Caption.isEmpty());
    f.click(f.button_done);
    ASSERT_TRUE(f.unloaded);
    EXPECT_EQ(rig.form.duration, 15);
    EXPECT_FLOAT_EQ(rig.form.thresh, 1.2f);
}

TEST(Form5ScrollBars, moving_a_bar_writes_its_field_and_the_value) {
    DialogRig rig;
    Form5& f = rig.open();
    f.scroll(f.Threshold_Scroll, -37);
    EXPECT_EQ(f.Threshold_Text.Text, QStringLiteral("-3.7"));
    EXPECT_FLOAT_EQ(f.threshold_temp, -3.7f);
    f.scroll(f.BreathHold_Scroll, 42);
    EXPECT_EQ(f.BreathHold_Text.Text, QStringLiteral("42"));
    EXPECT_EQ(f.duration_temp, 42);
    EXPECT_TRUE(f.changes_made);
}

// ---- Text fields ------------------------------------------------------------------------------

TEST(Form5TextFields, a_forbidden_character_typed_mid_name_is_removed_and_the_caret_stays) {
    DialogRig rig;
    Form5& f = rig.open();
    struct Field {
        TextBox Form5::*box;
        QString Form5::*member;
    };
    const Field fields[] = {{&Form5::Text_last_name, &Form5::temp2},
                            {&Form5::Text_first_name, &Form5::temp4},
                            {&Form5::Text_medical_id, &Form5::temp3},
                            {&Form5::Text_session, &Form5::temp1}};
    // The nine that a file name can't hold, and characters beyond the 8-bit set of the files.
    QStringList bad_characters;
    for (char bad : std::string("\\,/?:*<>|")) bad_characters.append(QString(QLatin1Char(bad)));
    bad_characters << QStringLiteral("\u0159") << QStringLiteral("\u20AC")
                   << QStringLiteral("\u0152") << QStringLiteral("\u4E2D");
    for (const Field& field : fields) {
        for (const QString& bad : bad_characters) {
            TextBox& box = f.*field.box;
            type(f, box, QStringLiteral("Smith"));
            f.Label_message.Caption.clear();
            // The character typed between "Smi" and "th": the caret stands behind it.
            f.type_text(box, QStringLiteral("Smi") + bad + QStringLiteral("th"), 4);
            EXPECT_EQ(box.Text, QStringLiteral("Smith")) << bad.toStdString();
            EXPECT_EQ(box.SelStart, 3) << bad.toStdString();
            EXPECT_EQ(f.*field.member, QStringLiteral("Smith")) << bad.toStdString();
            EXPECT_EQ(f.Label_message.Caption, message_text(132)) << bad.toStdString();
        }
    }
}

// "Dvo\u0159\u00E1k" once made a folder whose patient file could never be written, and ".Doe"
// a patient file that every reader took for a hidden one.
TEST(Form5TextFields, what_the_files_hold_passes_and_the_rest_is_taken_out_as_typed) {
    struct Case {
        QString typed;
        QString kept;
        bool refused_last;  // the last character typed was taken out, and message 132 stands
    };
    const Case cases[] = {
        {QStringLiteral("M\u00FCller"), QStringLiteral("M\u00FCller"), false},
        {QStringLiteral("\u00D8deg\u00E5rd \u00DF\u00FF"),
         QStringLiteral("\u00D8deg\u00E5rd \u00DF\u00FF"), false},
        {QStringLiteral("Dvo\u0159\u00E1k"), QStringLiteral("Dvo\u00E1k"), false},
        {QStringLiteral("Dvo\u0159"), QStringLiteral("Dvo"), true},
        {QStringLiteral("\u041F\u0435\u0442\u0440\u043E\u0432"), QString(), true},
        {QStringLiteral(".Doe"), QStringLiteral("Doe"), false},
        {QStringLiteral(" ."), QString(), true},
        {QStringLiteral("St. John."), QStringLiteral("St. John."), false},
    };
    for (const auto& c : cases) {
        DialogRig rig;
        Form5& f = rig.open();
        // One character at a time, as the window delivers typing.
        for (int n = 1; n <= c.typed.size(); ++n)
            f.type_text(f.Text_last_name, f.Text_last_name.Text + c.typed[n - 1],
                        static_cast<int>(f.Text_last_name.Text.size()) + 1);
        EXPECT_EQ(f.Text_last_name.Text, c.kept) << c.typed.toStdString();
        EXPECT_EQ(f.temp2, c.kept) << c.typed.toStdString();
        EXPECT_EQ(f.Label_message.Caption, c.refused_last ? message_text(132) : QString())
            << c.typed.toStdString();
    }
}

TEST(Form5TextFields, names_are_kept_trimmed_and_the_session_alone_is_no_change) {
    DialogRig rig;
    Form5& f = rig.open();
    type(f, f.Text_session, QStringLiteral(" 7b "));
    EXPECT_EQ(f.temp1, QStringLiteral("7b"));
    EXPECT_FALSE(f.changes_made);
    type(f, f.Text_last_name, QStringLiteral("  O'Neil "));
    EXPECT_EQ(f.temp2, QStringLiteral("O'Neil"));
    EXPECT_TRUE(f.changes_made);
}

TEST(Form5TextFields, the_operator_types_at_most_twenty_characters) {
    DialogRig rig;
    Form5& f = rig.open();
    type(f, f.Text_first_name, QString(25, QLatin1Char('a')));
    EXPECT_EQ(f.Text_first_name.Text.size(), 20);
}

TEST(Form5TextFields, a_session_already_held_is_marked_in_session_mode) {
    DialogRig rig(true);
    rig.sessions_on_file = {QStringLiteral("3")};
    Form5& f = rig.open();
    type(f, f.Text_session, QStringLiteral("3"));
    EXPECT_EQ(f.Label_message.Caption, message_text(140));
    EXPECT_EQ(f.Text_session.BackColor, (Rgb{255, 192, 192}));
    type(f, f.Text_session, QStringLiteral("5"));
    EXPECT_TRUE(f.Label_message.Caption.isEmpty());
    EXPECT_EQ(f.Text_session.BackColor, (Rgb{255, 255, 255}));
}

// ---- The medical ID search --------------------------------------------------------------------

TEST(Form5MedicalId, the_search_reads_the_first_parameter_file_of_each_folder) {
    struct Case {
        const char* id;
        bool found;
    };
    // "MR2" stands in a folder's second file, "MR3" under a foreign stamp: neither counts.
    // A folder and a file of a name that begins with "." are searched like any other.
    const Case cases[] = {{"MR1", true},  {"MR9", true}, {"MR2", false}, {"MR3", false},
                          {"mr1", false}, {"MR", false}, {"MR5", true}};
    for (const auto& c : cases) {
        DialogRig rig;
        rig.patient_on_disk(QStringLiteral("A_B_MR1"), QStringLiteral("A.zel"),
                            QStringLiteral("MR1"));
        rig.patient_on_disk(QStringLiteral("C_D_MR2"), QStringLiteral("a.zel"),
                            QStringLiteral("MR8"));
        rig.patient_on_disk(QStringLiteral("C_D_MR2"), QStringLiteral("b.zel"),
                            QStringLiteral("MR2"));
        rig.patient_on_disk(QStringLiteral("E_F_MR3"), QStringLiteral("E.zel"),
                            QStringLiteral("MR3"), QStringLiteral("Other File"));
        rig.patient_on_disk(QStringLiteral("G_H_MR9"), QStringLiteral("G.ZEL"),
                            QStringLiteral("MR9"));
        rig.patient_on_disk(QStringLiteral(".K_L_MR5"), QStringLiteral(".K.zel"),
                            QStringLiteral("MR5"));
        Form5& f = rig.open();
        type(f, f.Text_medical_id, QLatin1String(c.id));
        EXPECT_EQ(f.Label_message.Caption, c.found ? message_text(197) : QString()) << c.id;
        EXPECT_EQ(f.Text_medical_id.BackColor,
                  c.found ? (Rgb{255, 192, 192}) : (Rgb{255, 255, 255}))
            << c.id;
        EXPECT_EQ(f.changes_made, !c.found) << c.id;
    }
}

TEST(Form5MedicalId, session_mode_does_not_search) {
    DialogRig rig(true);
    rig.patient_on_disk(QStringLiteral("Doe_Jane_MR77"), QStringLiteral("Doe.zel"),
                        QStringLiteral("MR77"));
    Form5& f = rig.open();
    EXPECT_TRUE(f.Label_message.Caption.isEmpty());
    EXPECT_EQ(f.temp3, QStringLiteral("MR77"));
}

// ---- Gating and trigger -----------------------------------------------------------------------

TEST(Form5Gating, the_two_boxes_are_one_exclusive_pair) {
    DialogRig rig;
    Form5& f = rig.open();
    struct Step {
        Control Form5::*clicked;
        int automatic, manual;
    };
    const Step steps[] = {{&Form5::Check_automatic, 1, 0},
                          {&Form5::Check_manual, 0, 1},
                          {&Form5::Check_manual, 0, 1},  // a ticked box stays ticked
                          {&Form5::Check_automatic, 1, 0}};
    for (const Step& s : steps) {
        f.click(f.*s.clicked);
        EXPECT_EQ(f.Check_automatic.Value, s.automatic);
        EXPECT_EQ(f.Check_manual.Value, s.manual);
        EXPECT_FALSE(f.boolCheckClick);
    }
    EXPECT_TRUE(f.changes_made);
}

TEST(Form5Trigger, the_options_set_the_trigger_direction) {
    DialogRig rig;
    Form5& f = rig.open();
    f.click(f.check_Exhalation);
    EXPECT_FALSE(f.temp_inhale);
    EXPECT_EQ(f.Check_Inhalation.Value, 0);
    f.click(f.Check_Inhalation);
    EXPECT_TRUE(f.temp_inhale);
    EXPECT_EQ(f.check_Exhalation.Value, 0);
}

// ---- Done -------------------------------------------------------------------------------------

TEST(Form5Done, refuses_until_every_parameter_is_defined) {
    struct Case {
        const char* name;
        std::function<void(Form5&)> undo;
    };
    const Case cases[] = {
        {"last name", [](Form5& f) { type(f, f.Text_last_name, QString()); }},
        {"blank first name", [](Form5& f) { type(f, f.Text_first_name, QStringLiteral("  ")); }},
        {"medical id", [](Form5& f) { type(f, f.Text_medical_id, QString()); }},
        {"session", [](Form5& f) { type(f, f.Text_session, QString()); }},
    };
    for (const auto& c : cases) {
        DialogRig rig;
        Form5& f = rig.open();
        fill_valid_patient(f);
        c.undo(f);
        f.click(f.button_done);
        EXPECT_EQ(f.Label_message.Caption, message_text(133)) << c.name;
        EXPECT_FALSE(f.unloaded) << c.name;
        EXPECT_FALSE(rig.form.patient_defined) << c.name;
    }
    DialogRig rig;
    Form5& f = rig.open();
    type(f, f.Text_last_name, QStringLiteral("Smith"));
    type(f, f.Text_first_name, QStringLiteral("Ann"));
    type(f, f.Text_medical_id, QStringLiteral("MR1"));
    f.click(f.button_done);  // no gating chosen
    EXPECT_EQ(f.Label_message.Caption, message_text(133));
    EXPECT_FALSE(f.unloaded);
}

TEST(Form5Done, refuses_a_medical_id_already_on_disk) {
    DialogRig rig;
    Form5& f = rig.open();
    fill_valid_patient(f);
    // Another patient's folder appears while the dialog is open.
    rig.patient_on_disk(QStringLiteral("Roe_Bo_MR1"), QStringLiteral("Roe.zel"),
                        QStringLiteral("MR1"));
    f.click(f.button_done);
    EXPECT_EQ(f.Label_message.Caption, message_text(197));
    EXPECT_FALSE(f.unloaded);
    EXPECT_FALSE(QDir(rig.data.path() + QStringLiteral("/Smith_Ann_MR1")).exists());
}

TEST(Form5Done, a_new_patient_reaches_the_console_with_a_folder) {
    DialogRig rig;
    rig.form.breath_holds = 9;
    Form5& f = rig.open();
    fill_valid_patient(f);
    f.click(f.Check_automatic);
    f.click(f.check_Exhalation);
    type(f, f.BreathHold_Text, QStringLiteral("98.6"));
    f.key_press(f.BreathHold_Text, 13);
    type(f, f.Threshold_Text, QStringLiteral("-3.04"));
    f.lost_focus(f.Threshold_Text);
    f.click(f.button_done);
    ASSERT_TRUE(f.unloaded);
    const Form1& form = rig.form;
    EXPECT_EQ(form.patient_last_name, QStringLiteral("Smith"));
    EXPECT_EQ(form.patient_first_name, QStringLiteral("Ann"));
    EXPECT_EQ(form.patient_medical_id, QStringLiteral("MR1"));
    EXPECT_EQ(form.session, QStringLiteral("1"));
    EXPECT_EQ(form.duration, 99);
    EXPECT_FLOAT_EQ(form.thresh, -3.0f);
    EXPECT_FALSE(form.inhale);
    EXPECT_TRUE(form.Gated_Treatment);
    EXPECT_TRUE(form.patient_defined);
    EXPECT_EQ(form.breath_holds, 0);
    EXPECT_FALSE(f.Cancel_status);
    // |2 * 0.75| < |-3|: the chart widens to -3.75 rounded with ties up, which is -3.7.
    EXPECT_DOUBLE_EQ(form.max_y, 3.7);
    EXPECT_DOUBLE_EQ(form.min_y, -3.7);
    EXPECT_TRUE(QDir(rig.data.path() + QStringLiteral("/Smith_Ann_MR1")).exists());
    EXPECT_TRUE(rig.fakes.windows.log.contains(QStringLiteral("unload Form5")));
}

TEST(Form5Done, a_failure_leaves_the_dialog_open_and_the_console_as_it_was) {
    DialogRig rig;
    Form5& f = rig.open();
    fill_valid_patient(f);
    // A folder of that name without a parameter file: the search passes, the folder can't be
    // made.
    QDir(rig.data.path()).mkdir(QStringLiteral("Smith_Ann_MR1"));
    f.click(f.button_done);
    EXPECT_FALSE(f.unloaded);
    EXPECT_FALSE(f.Label_message.Caption.isEmpty());
    EXPECT_FALSE(rig.form.patient_defined);
    EXPECT_TRUE(rig.form.patient_last_name.isEmpty());
    EXPECT_EQ(rig.form.duration, 15);
}

TEST(Form5Done, session_mode_checks_the_folder_and_the_session) {
    struct Case {
        bool folder;
        const char* session;
        int message;
    };
    const Case cases[] = {{false, "4", 196}, {true, "3", 140}, {true, " 3 ", 140}, {true, "4", 0}};
    for (const auto& c : cases) {
        DialogRig rig(true);
        rig.sessions_on_file = {QStringLiteral("3")};
        if (c.folder) QDir(rig.data.path()).mkdir(QStringLiteral("Doe_Jane_MR77"));
        Form5& f = rig.open();
        type(f, f.Text_session, QLatin1String(c.session));
        f.click(f.button_done);
        EXPECT_EQ(f.unloaded, c.message == 0) << c.session;
        if (c.message) {
            EXPECT_EQ(f.Label_message.Caption, message_text(c.message)) << c.session;
            continue;
        }
        // The loaded patient's values go to the console; the chart is not widened here.
        EXPECT_EQ(rig.form.session, QStringLiteral("4"));
        EXPECT_EQ(rig.form.duration, 20);
        EXPECT_FLOAT_EQ(rig.form.thresh, -0.8f);
        EXPECT_FALSE(rig.form.inhale);
        EXPECT_TRUE(rig.form.Gated_Treatment);
        EXPECT_DOUBLE_EQ(rig.form.max_y, 2.0);
    }
}

// ---- Cancel -----------------------------------------------------------------------------------

TEST(Form5Cancel, asks_only_when_something_was_changed) {
    struct Case {
        bool change;
        int answer;
        bool closed;
    };
    // Buttons of the question: 0 Yes, 1 No.
    const Case cases[] = {{false, 1, true}, {true, 0, true}, {true, 1, false}};
    for (const auto& c : cases) {
        DialogRig rig;
        Form5& f = rig.open();
        if (c.change) type(f, f.Text_first_name, QStringLiteral("Ann"));
        rig.fakes.windows.answer(c.answer);
        f.click(f.button_cancel);
        EXPECT_EQ(rig.fakes.windows.log.contains(QStringLiteral("ask ") + message_text(353)),
                  c.change);
        EXPECT_EQ(f.unloaded, c.closed);
        EXPECT_EQ(f.Cancel_status, c.closed);
        EXPECT_FALSE(rig.form.patient_defined);
    }
}

// ---- Opening from the console -----------------------------------------------------------------

TEST(Form5Opening, each_opening_is_fresh_and_the_result_stays_readable) {
    DialogRig rig;
    rig.fakes.windows.during(Window::Form5, [&] {
        Form5& f = *rig.form.form5;
        EXPECT_EQ(f.Text_session.Text, QStringLiteral("1"));
        EXPECT_TRUE(f.Text_first_name.Text.isEmpty());
        type(f, f.Text_first_name, QStringLiteral("Ann"));
        rig.fakes.windows.answer(0);
        f.click(f.button_cancel);
    });
    rig.form.show_Form5();
    rig.form.show_Form5();
    EXPECT_EQ(rig.fakes.windows.log.count(QStringLiteral("show Form5")), 2);
    ASSERT_TRUE(rig.form.form5);
    EXPECT_TRUE(rig.form.form5->Cancel_status);
}

}  // namespace
}  // namespace zel::test
