// The Create New Patient dialog: what the operator may enter, what Done refuses, and what
// reaches the console.
#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <functional>
#include <utility>

#include "dialog_rig.h"
#include "fakes/files.h"

namespace zel::test {
namespace {

constexpr Rgb marked{255, 192, 192}, unmarked{255, 255, 255};

// A patient folder with its parameter file, as the patient files write it.
void patient_on_disk(DialogRig& rig, const QString& folder, const QString& file,
                     const QString& medical_id,
                     const QString& stamp = QStringLiteral("ZEL Patient Parameter File")) {
    QDir(rig.data.path()).mkpath(folder);
    write(rig.data.path() + QLatin1Char('/') + folder + QLatin1Char('/') + file,
          (stamp + "\r\n3.00.01\r\nPatient Last Name:X\r\nPatient First Name:Y\r\n" +
           "Patient Medical ID:" + medical_id + "\r\nDate:1/2/2026\r\n")
              .toLatin1());
}

// A new patient with every setting changed from the console's.
void fill_new_patient(Form5& f, bool gating = true) {
    type(f, f.Text_last_name, QStringLiteral("Smith"));
    type(f, f.Text_first_name, QStringLiteral("Ann"));
    type(f, f.Text_medical_id, QStringLiteral("MR1"));
    if (gating) f.click(f.Check_automatic);
    f.click(f.check_Exhalation);
    f.scroll(f.BreathHold_Scroll, 42);
    f.scroll(f.Threshold_Scroll, -37);
}

// ---- Load -------------------------------------------------------------------------------------

// A new patient opens on the console's values, the threshold in the pattern with a bare
// separator, and on session 1.
TEST(Form5Load, a_new_patient_opens_on_the_console_values_and_session_one) {
    const struct { float thresh; char separator; const char* shown; int scroll; } rows[] = {
        {1.0f, '.', "1.", 10}, {0.5f, '.', ".5", 5},      {0.0f, '.', ".", 0},
        // A single rounds from its own decimal form: 0.35 is not the 0.3499... of a double.
        {0.35f, '.', ".4", 4}, {-2.5f, '.', "-2.5", -25}, {1.0f, ',', "1,", 10},
        {10.0f, '.', "10.", 100},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.thresh);
        DialogRig rig(QLatin1Char(row.separator), row.thresh);
        Form5& f = rig.open5();
        EXPECT_EQ((QStringList{f.Threshold_Text.Text, f.BreathHold_Text.Text, f.Text_session.Text,
                               f.temp1, f.button_done.Caption}),
                  (QStringList{row.shown, "15", "1", "1", "Save"}));
        EXPECT_EQ((std::vector<int>{f.Threshold_Scroll.Value, f.BreathHold_Scroll.Value,
                                    f.Check_Inhalation.Value, f.check_Exhalation.Value,
                                    f.Check_automatic.Value, f.Check_manual.Value}),
                  (std::vector<int>{row.scroll, 15, 1, 0, 0, 0}));
        EXPECT_TRUE(f.Text_last_name.Enabled && f.Threshold_Scroll.Enabled && !f.changes_made);
        // The session alone is no change.
        type(f, f.Text_session, QStringLiteral(" 7b "));
        EXPECT_TRUE(f.temp1 == QStringLiteral("7b") && !f.changes_made);
    }
}

// ---- Text fields ------------------------------------------------------------------------------

TEST(Form5TextFields, a_forbidden_character_typed_mid_name_is_removed_and_the_caret_stays) {
    DialogRig rig;
    Form5& f = rig.open5();
    const struct { TextBox Form5::*box; QString Form5::*member; } fields[] = {
        {&Form5::Text_last_name, &Form5::temp2}, {&Form5::Text_first_name, &Form5::temp4},
        {&Form5::Text_medical_id, &Form5::temp3}, {&Form5::Text_session, &Form5::temp1}};
    // The nine that a file name can't hold, and characters beyond the 8-bit set of the files.
    const QString bad_characters = QStringLiteral("\u0159\u20AC\u0152\u4E2D\\,/?:*<>|");
    for (const auto& field : fields) {
        for (const QChar bad : bad_characters) {
            SCOPED_TRACE(QString(bad).toStdString());
            TextBox& box = f.*field.box;
            type(f, box, QStringLiteral("Smith"));
            f.Label_message.Caption.clear();
            // The character typed between "Smi" and "th": the caret stands behind it.
            f.type_text(box, QStringLiteral("Smi") + bad + QStringLiteral("th"), 4);
            EXPECT_EQ((QStringList{box.Text, f.*field.member, f.Label_message.Caption,
                                   QString::number(box.SelStart)}),
                      (QStringList{"Smith", "Smith", message_text(132), "3"}));
        }
    }
}

// "Dvo\u0159\u00E1k" once made a folder whose patient file could never be written, and ".Doe"
// a patient file that every reader took for a hidden one. Names are kept trimmed, at most
// twenty characters typed.
TEST(Form5TextFields, what_the_files_hold_passes_and_the_rest_is_taken_out_as_typed) {
    const struct {
        QString typed, shown, kept;
        bool refused_last;  // the last character typed was taken out, and message 132 stands
    } rows[] = {
        {"M\u00FCller", "M\u00FCller", "M\u00FCller", false},
        {"\u00D8deg\u00E5rd \u00DF\u00FF", "\u00D8deg\u00E5rd \u00DF\u00FF",
         "\u00D8deg\u00E5rd \u00DF\u00FF", false},
        {"Dvo\u0159\u00E1k", "Dvo\u00E1k", "Dvo\u00E1k", false}, {"Dvo\u0159", "Dvo", "Dvo", true},
        {"\u041F\u0435\u0442\u0440\u043E\u0432", "", "", true}, {".Doe", "Doe", "Doe", false},
        {" .", "", "", true}, {"St. John.", "St. John.", "St. John.", false},
        {"  O'Neil ", "  O'Neil ", "O'Neil", false},
        {QString(25, 'a'), QString(20, 'a'), QString(20, 'a'), false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.typed.toStdString());
        DialogRig rig;
        Form5& f = rig.open5();
        // One character at a time, as the window delivers typing.
        for (const QChar c : row.typed)
            f.type_text(f.Text_last_name, f.Text_last_name.Text + c,
                        static_cast<int>(f.Text_last_name.Text.size()) + 1);
        EXPECT_EQ((QStringList{f.Text_last_name.Text, f.temp2, f.Label_message.Caption}),
                  (QStringList{row.shown, row.kept, row.refused_last ? message_text(132) : ""}));
    }
}

// ---- The medical ID search --------------------------------------------------------------------

TEST(Form5MedicalId, the_search_reads_the_first_parameter_file_of_each_folder) {
    // "MR2" stands in a folder's second file, "MR3" under a foreign stamp: neither counts.
    // A folder and a file of a name that begins with "." are searched like any other.
    const struct { const char* id; bool found; } rows[] = {
        {"MR1", true}, {"MR9", true}, {"MR2", false}, {"MR3", false},
        {"mr1", false}, {"MR", false}, {"MR5", true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.id);
        DialogRig rig;
        patient_on_disk(rig, "A_B_MR1", "A.zel", "MR1");
        patient_on_disk(rig, "C_D_MR2", "a.zel", "MR8");
        patient_on_disk(rig, "C_D_MR2", "b.zel", "MR2");
        patient_on_disk(rig, "E_F_MR3", "E.zel", "MR3", "Other File");
        patient_on_disk(rig, "G_H_MR9", "G.ZEL", "MR9");
        patient_on_disk(rig, ".K_L_MR5", ".K.zel", "MR5");
        Form5& f = rig.open5();
        type(f, f.Text_medical_id, QLatin1String(row.id));
        EXPECT_EQ(f.Label_message.Caption, row.found ? message_text(197) : QString());
        EXPECT_EQ(f.Text_medical_id.BackColor, row.found ? marked : unmarked);
        EXPECT_EQ(f.changes_made, !row.found);
    }
}

// ---- Gating and trigger -----------------------------------------------------------------------

// The gating boxes are one exclusive pair, and the trigger options set the direction.
TEST(Form5Options, the_gating_pair_and_the_trigger_options) {
    DialogRig rig;
    Form5& f = rig.open5();
    const struct {
        Control Form5::*clicked;
        std::vector<int> values;  // automatic, manual, inhalation, exhalation, temp_inhale
    } steps[] = {{&Form5::Check_automatic, {1, 0, 1, 0, 1}},
                 {&Form5::Check_manual, {0, 1, 1, 0, 1}},
                 {&Form5::Check_manual, {0, 1, 1, 0, 1}},  // a ticked box stays ticked
                 {&Form5::check_Exhalation, {0, 1, 0, 1, 0}},
                 {&Form5::Check_automatic, {1, 0, 0, 1, 0}},
                 {&Form5::Check_Inhalation, {1, 0, 1, 0, 1}}};
    for (const auto& step : steps) {
        f.click(f.*step.clicked);
        EXPECT_EQ((std::vector<int>{f.Check_automatic.Value, f.Check_manual.Value,
                                    f.Check_Inhalation.Value, f.check_Exhalation.Value,
                                    f.temp_inhale}),
                  step.values);
        EXPECT_FALSE(f.boolCheckClick);
    }
    EXPECT_TRUE(f.changes_made);
}

// ---- Done -------------------------------------------------------------------------------------

// A new patient reaches the console with a folder of its own, the chart widened for the
// threshold; a refusal leaves the dialog open and the console as it was.
TEST(Form5Done, takes_a_complete_new_patient_and_refuses_the_rest) {
    const QString refused = message_text(133);
    const struct {
        const char* name;
        std::function<void(DialogRig&, Form5&)> spoil;
        QString message;
        bool gating = true;
    } rows[] = {
        {"complete", [](DialogRig&, Form5&) {}, ""},
        {"last name", [](DialogRig&, Form5& f) { type(f, f.Text_last_name, ""); }, refused},
        {"blank first name", [](DialogRig&, Form5& f) { type(f, f.Text_first_name, "  "); },
         refused},
        {"medical id", [](DialogRig&, Form5& f) { type(f, f.Text_medical_id, ""); }, refused},
        {"session", [](DialogRig&, Form5& f) { type(f, f.Text_session, ""); }, refused},
        {"gating", [](DialogRig&, Form5&) {}, refused, false},
        // Another patient's folder appears while the dialog is open.
        {"medical id on disk",
         [](DialogRig& rig, Form5&) { patient_on_disk(rig, "Roe_Bo_MR1", "Roe.zel", "MR1"); },
         message_text(197)},
        // A folder of that name without a parameter file: the search passes, the folder can't
        // be made.
        {"folder not made",
         [](DialogRig& rig, Form5&) { QDir(rig.data.path()).mkdir("Smith_Ann_MR1"); },
         "Path/File access error"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        DialogRig rig;
        rig.form.breath_holds = 9;
        const QString before = console(rig.form);
        Form5& f = rig.open5();
        fill_new_patient(f, row.gating);
        row.spoil(rig, f);
        f.click(f.button_done);
        const bool taken = row.message.isEmpty();
        EXPECT_EQ(f.Label_message.Caption, row.message);
        EXPECT_EQ(std::pair(f.unloaded, rig.fakes.windows.log.contains("unload Form5")),
                  std::pair(taken, taken));
        // |2 * 0.75| < |-3.7|: the chart widens to 1.25 times the threshold.
        EXPECT_EQ(console(rig.form),
                  taken ? QStringLiteral("Smith|Ann|MR1|1|42|-3.7|0|1|4.6|-4.6|1|0") : before);
        EXPECT_EQ(QFileInfo(f.made_folder).isDir(), taken);
    }
}

// A new session opens with only the session editable, on the next one of the loaded
// patient's history, and searches no medical ID. The session typed is marked while the
// history holds it, and Done takes it only then, into the loaded patient's folder, with the
// loaded patient's values and the chart as it was.
TEST(Form5Session, opens_on_the_loaded_patient_and_done_checks_the_folder_and_the_session) {
    const struct { bool folder; const char* session; bool marked; int message; } rows[] = {
        {false, "4", false, 196}, {true, "3", true, 140}, {true, " 3 ", false, 140},
        {true, "4", false, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.session);
        DialogRig rig;
        rig.form.new_patient_loading = true;
        rig.form.max_y = 0.8, rig.form.min_y = -0.8;
        rig.sessions_on_file = {QStringLiteral("3")};
        if (row.folder) patient_on_disk(rig, "Doe_Jane_MR77", "Doe.zel", "MR77");
        const QString before = console(rig.form);
        Form5& f = rig.open5();
        for (const Control* c : std::initializer_list<const Control*>{
                 &f.Text_last_name, &f.Text_first_name, &f.Text_medical_id, &f.Check_automatic,
                 &f.Check_manual, &f.BreathHold_Text, &f.Threshold_Text, &f.BreathHold_Scroll,
                 &f.Threshold_Scroll, &f.Check_Inhalation, &f.check_Exhalation})
            EXPECT_FALSE(c->Enabled);
        EXPECT_EQ(rig.next_id_asked, (QStringList{"Doe", "Jane", "MR77"}));
        EXPECT_EQ((QStringList{f.button_done.Caption, f.Text_session.Text, f.Text_last_name.Text,
                               f.temp3, f.BreathHold_Text.Text, f.Threshold_Text.Text,
                               f.Label_message.Caption}),
                  (QStringList{"Done", "4", "Doe", "MR77", "20", "-.8", ""}));
        EXPECT_EQ((std::vector<int>{f.Text_session.SelStart, f.Text_session.Enabled,
                                    f.Check_automatic.Value, f.Check_manual.Value,
                                    f.check_Exhalation.Value, f.changes_made}),
                  (std::vector<int>{1, 1, 1, 0, 1, 0}));
        type(f, f.Text_session, QStringLiteral("3"));
        EXPECT_EQ(f.Label_message.Caption, message_text(140));
        type(f, f.Text_session, QLatin1String(row.session));
        EXPECT_EQ(f.Text_session.BackColor, row.marked ? marked : unmarked);
        EXPECT_EQ(f.Label_message.Caption, row.marked ? message_text(140) : QString());
        f.click(f.button_done);
        EXPECT_EQ(f.unloaded, row.message == 0);
        EXPECT_EQ(f.Label_message.Caption, row.message ? message_text(row.message) : QString());
        EXPECT_EQ(console(rig.form), row.message ? before
                                                 : QStringLiteral("Doe|Jane|MR77|4|20|-0.8|0|1|"
                                                                  "0.8|-0.8|1|0"));
    }
}

// ---- Opening ----------------------------------------------------------------------------------

TEST(Form5Opening, each_opening_is_fresh_and_the_result_stays_readable) {
    DialogRig rig;
    rig.fakes.windows.during(Window::Form5, [&] {
        Form5& f = *rig.form.form5;
        EXPECT_TRUE(f.Text_session.Text == "1" && f.Text_first_name.Text.isEmpty());
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
