// The System Settings dialog: the chart's scale, the Y range against the signed threshold, the
// language warning, the data directory, and what Done leaves in the console and on disk.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <memory>

#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

struct DialogRig : Rig {
    std::unique_ptr<Form11> dialog;
    QTemporaryDir data;

    explicit DialogRig(float thresh = 1.2f, QChar separator = QLatin1Char('.')) {
        fakes.locale.separator = separator;
        form.number_format =
            separator == QLatin1Char(',') ? QStringLiteral("comma") : QStringLiteral("dot");
        form.found_number_format = form.number_format;
        form.thresh = thresh;
        form.max_y = 2.0;
        form.min_y = -2.0;
        form.max_x = 1000;
        form.x_scale_factor = 1;
        form.data_directory = data.path();
        form.language_file = QStringLiteral("English");
        form.language_name = {QStringLiteral("Deutsch"), QStringLiteral("Svenska")};
    }
    Form11& open() {
        dialog = std::make_unique<Form11>(form);
        dialog->Form_Load();
        return *dialog;
    }
    QString ini(const char* name) const { return form.AppDataPath + QLatin1Char('/') + name; }
};

void enter(Form11& f, const QString& text) {
    f.type_text(f.Y_Range_Text, text, static_cast<int>(text.size()));
    f.key_press(f.Y_Range_Text, 13);
}

TEST(Form11, opens_on_the_settings_in_force_with_done_off) {
    struct Case {
        float scale;
        double max_x;
        bool patient;
        int div, length;
        float scale_copy, max_x_copy;
    };
    const Case cases[] = {
        {1, 1000, false, 1, 2, 1, 1000},
        {2, 500, true, 2, 1, 2, 500},
        {3, 1500, false, 3, 3, 3, 1500},
        // A value that isn't offered chooses nothing, and its copy stays 0.
        {1.5f, 750, false, 0, 0, 0, 0},
    };
    for (const Case& c : cases) {
        DialogRig rig;
        rig.form.x_scale_factor = c.scale;
        rig.form.max_x = c.max_x;
        rig.form.patient_defined = c.patient;
        Form11& f = rig.open();
        const Control* divisions[] = {&f.Sec_Div_1, &f.Sec_Div_2, &f.Sec_Div_3};
        const Control* lengths[] = {&f.Sec_Length_10, &f.Sec_Length_20, &f.Sec_Length_30};
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(divisions[k]->Value, c.div == k + 1 ? 1 : 0) << c.scale;
            EXPECT_EQ(lengths[k]->Value, c.length == k + 1 ? 1 : 0) << c.max_x;
        }
        EXPECT_FLOAT_EQ(f.x_scale_factor_temp, c.scale_copy);
        EXPECT_FLOAT_EQ(f.max_x_temp, c.max_x_copy);
        EXPECT_EQ(f.Done.Caption, message_text(c.patient ? 266 : 113));
        EXPECT_FALSE(f.Done.Enabled);
        EXPECT_FALSE(f.changes_made);
        EXPECT_EQ(f.Y_Range_Text.Text, QStringLiteral("2."));
        EXPECT_EQ(f.Y_Range_Scroll.Value, 20);
        EXPECT_FLOAT_EQ(f.max_y_temp, 2.0f);
        EXPECT_EQ(f.Patient_directory_text.Text, rig.data.path());
        EXPECT_EQ(f.LangCombo.items, (QStringList{"English", "Deutsch", "Svenska"}));
        EXPECT_EQ(f.LangCombo.ListIndex, 0);
        EXPECT_TRUE(f.Label_warningB.Caption.isEmpty());
    }
}

TEST(Form11, the_scroll_bar_rests_on_the_thresholds_size) {
    struct Case {
        float thresh;
        int min;
    };
    const Case cases[] = {{1.2f, 13}, {-1.2f, 13}, {0.0f, 1}, {10.0f, 101}, {-0.05f, 2}};
    for (const Case& c : cases) {
        DialogRig rig{c.thresh};
        rig.form.max_y = 12.5;
        Form11& f = rig.open();
        EXPECT_EQ(f.Y_Range_Scroll.Min, c.min) << c.thresh;
        EXPECT_EQ(f.Y_Range_Scroll.Max, 200);
    }
}

TEST(Form11, y_range_entries_against_the_signed_threshold) {
    struct Case {
        float thresh;
        const char* text;
        char separator;
        int message;
        float range;
    };
    const Case cases[] = {
        {1.2f, "1.3", '.', 0, 1.3f},     {1.2f, "1.2", '.', 189, 2.0f},
        {1.2f, "20", '.', 0, 20.0f},     {1.2f, "20.04", '.', 0, 20.0f},
        {1.2f, "20.06", '.', 189, 2.0f}, {1.2f, "1.24", '.', 189, 2.0f},
        {1.2f, "1.25", '.', 0, 1.3f},    {1.2f, "abc", '.', 186, 2.0f},
        {1.2f, "2,5", '.', 186, 2.0f},   {1.2f, "2.5", ',', 186, 2.0f},
        {1.2f, "2,5", ',', 0, 2.5f},     {-1.0f, "0", '.', 0, 0.0f},
        {-1.0f, "-0.9", '.', 0, -0.9f},  {-1.0f, "-1", '.', 189, 2.0f},
    };
    for (const Case& c : cases) {
        DialogRig rig{c.thresh, QLatin1Char(c.separator)};
        Form11& f = rig.open();
        enter(f, QString::fromLatin1(c.text));
        EXPECT_EQ(f.Label_warning.Caption, c.message ? message_text(c.message) : QString())
            << c.text;
        EXPECT_FLOAT_EQ(f.max_y_temp, c.range) << c.text;
        EXPECT_TRUE(f.Done.Enabled) << c.text;
        EXPECT_GE(f.Y_Range_Scroll.Value, f.Y_Range_Scroll.Min) << c.text;
    }
}

TEST(Form11, done_writes_the_chart_settings) {
    DialogRig rig{-1.0f};
    Form11& f = rig.open();
    f.click(f.Sec_Div_3);
    f.click(f.Sec_Length_10);
    f.key_press(f.Y_Range_Text, '5');
    EXPECT_FALSE(f.Done.Enabled);
    // Above a negative threshold a range of 0 passes and leaves a chart of no height.
    enter(f, QStringLiteral("0"));
    f.click(f.Done);
    EXPECT_TRUE(f.unloaded);
    EXPECT_FLOAT_EQ(rig.form.x_scale_factor, 3);
    EXPECT_DOUBLE_EQ(rig.form.max_x, 500);
    EXPECT_DOUBLE_EQ(rig.form.max_y, 0);
    EXPECT_DOUBLE_EQ(rig.form.min_y, 0);
    EXPECT_EQ(rig.form.Label1.Caption, message_text(192));

    DialogRig other;
    Form11& g = other.open();
    g.scroll(g.Y_Range_Scroll, 35);
    EXPECT_EQ(g.Y_Range_Text.Text, QStringLiteral("3.5"));
    EXPECT_TRUE(g.Done.Enabled);
    g.click(g.Done);
    EXPECT_DOUBLE_EQ(other.form.max_y, 3.5);
    EXPECT_DOUBLE_EQ(other.form.min_y, -3.5);
    EXPECT_FALSE(QFile::exists(other.ini("zel.ini")));
}

TEST(Form11, a_language_choice_warns_and_is_stored_on_done) {
    DialogRig rig;
    Form11& f = rig.open();
    struct Step {
        int index;
        bool changed;
        bool warned;
    };
    const Step steps[] = {{2, true, true}, {0, false, false}, {1, true, true}};
    for (const Step& s : steps) {
        f.choose(f.LangCombo, s.index);
        EXPECT_EQ(f.languageChanged, s.changed) << s.index;
        EXPECT_EQ(f.Label_warningB.Caption, s.warned ? message_text(301) : QString());
        EXPECT_TRUE(f.Done.Enabled);
    }
    // A language alone is no change of the display: Cancel doesn't ask.
    EXPECT_FALSE(f.changes_made);
    f.scroll(f.Y_Range_Scroll, 30);
    f.click(f.Done);
    EXPECT_EQ(rig.form.language_file, QStringLiteral("Deutsch"));
    QFile ini(rig.ini("zel.ini"));
    ASSERT_TRUE(ini.open(QIODevice::ReadOnly));
    const QByteArray lines = ini.readAll();
    // The file takes the language before the display values change.
    EXPECT_TRUE(lines.contains("default language:Deutsch\r\n"));
    EXPECT_TRUE(lines.contains("max y:2.0\r\n"));
    EXPECT_DOUBLE_EQ(rig.form.max_y, 3.0);

    DialogRig back;
    Form11& g = back.open();
    g.choose(g.LangCombo, 1);
    g.choose(g.LangCombo, 0);
    g.click(g.Done);
    EXPECT_EQ(back.form.language_file, QStringLiteral("English"));
    EXPECT_FALSE(QFile::exists(back.ini("zel.ini")));
}

TEST(Form11, a_new_data_directory_is_stored_for_the_next_start) {
    struct Case {
        int answer;
        const char* chosen;
        bool changed;
    };
    const Case cases[] = {{vbCancel, "/x", false}, {vbOK, "", false}, {vbOK, "NEW", true}};
    for (const Case& c : cases) {
        DialogRig rig;
        QTemporaryDir other;
        const QString chosen = QString::fromLatin1(c.chosen) == QLatin1String("NEW")
                                   ? other.path()
                                   : QString(c.chosen);
        Form11& f = rig.open();
        rig.fakes.boxes.answer(c.answer);
        rig.fakes.dialogs.choose_folder(chosen);
        f.click(f.Change_directory);
        EXPECT_EQ(rig.fakes.boxes.shown.value(0), message_text(205));
        EXPECT_EQ(rig.fakes.boxes.styles.at(0), vbOKCancel | vbQuestion);
        EXPECT_EQ(f.Patient_directory_text.Text, c.changed ? chosen : rig.data.path());
        EXPECT_EQ(f.bodatapathchanged, c.changed);
        EXPECT_EQ(f.Done.Enabled, c.changed);
        EXPECT_FALSE(f.changes_made);
        f.click(f.Cancel);  // nothing to ask about
        EXPECT_TRUE(f.unloaded);
    }

    DialogRig rig;
    QTemporaryDir other;
    Form11& f = rig.open();
    rig.fakes.dialogs.choose_folder(other.path());
    f.click(f.Change_directory);
    f.click(f.Done);
    EXPECT_EQ(rig.fakes.boxes.shown.last(), message_text(194));
    EXPECT_EQ(rig.form.read_data_path(), other.path());
    // The console goes on with the directory it started with.
    EXPECT_EQ(rig.form.data_directory, rig.data.path());
}

TEST(Form11, cancel_after_a_display_change_asks) {
    struct Case {
        int answer;
        bool closed;
    };
    for (const Case c : {Case{1, false}, Case{0, true}}) {
        DialogRig rig;
        Form11& f = rig.open();
        f.click(f.Sec_Div_2);
        rig.fakes.windows.answer(c.answer);
        f.click(f.Cancel);
        EXPECT_EQ(f.unloaded, c.closed);
        EXPECT_FLOAT_EQ(rig.form.x_scale_factor, 1);
    }
}

// ---- The System Settings menu entry --------------------------------------------------------

TEST(SystemSettingsMenu, keeps_the_link_saves_the_patient_and_redraws) {
    for (bool defined : {true, false}) {
        DialogRig rig;
        rig.form.b_state = 1;
        rig.form.patient_defined = defined;
        rig.form.patient_parameter_filestamp = QStringLiteral("ZEL Patient Parameter File");
        rig.form.patient_last_name = QStringLiteral("Doe");
        rig.form.patient_first_name = QStringLiteral("Jane");
        rig.form.patient_medical_id = QStringLiteral("MR7");
        QDir(rig.data.path()).mkpath(QStringLiteral("Doe_Jane_MR7"));
        rig.fakes.serial.set_PortOpen(true);
        rig.form.Timer_HeartBeat->set_Enabled(true);
        rig.fakes.windows.during(Window::Form11, [&] {
            EXPECT_TRUE(rig.form.Timer_HeartBeat->Enabled());
            EXPECT_TRUE(rig.fakes.serial.sent().isEmpty());
            // Closed with nothing changed: the patient file is written all the same.
            rig.form.form11->click(rig.form.form11->Cancel);
        });
        rig.form.Control_Panel_Click();
        EXPECT_TRUE(rig.form.Timer_HeartBeat->Enabled());
        EXPECT_EQ(QFile::exists(rig.data.path() + QStringLiteral("/Doe_Jane_MR7/Doe.zel")),
                  defined);
        EXPECT_EQ(rig.fakes.chart.clears, 1);
    }
}

}  // namespace
}  // namespace zel::test
