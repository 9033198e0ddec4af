// The System Settings dialog: the chart's scale, the language warning, the data directory, and
// what Done leaves in the console and on disk.
#include <gtest/gtest.h>

#include <QFile>
#include <utility>

#include "dialog_rig.h"
#include "fakes/files.h"

namespace zel::test {
namespace {

QString ini(const DialogRig& rig) { return rig.form.AppDataPath + QStringLiteral("/zel.ini"); }

// The scroll bar's lowest value rests on the threshold's size, whatever its sign.
TEST(Form11, opens_on_the_settings_in_force_with_done_off) {
    // Ticks: seconds per division 1 2 3, sweep 10 20 30; then the bar's lowest value.
    const struct {
        float scale;
        double max_x;
        bool patient;
        float thresh;
        std::vector<int> ticks;
        float scale_copy, max_x_copy;
    } rows[] = {
        {1, 1000, false, 1.2f, {1, 0, 0, 0, 1, 0, 13}, 1, 1000},
        {2, 500, true, -1.2f, {0, 1, 0, 1, 0, 0, 13}, 2, 500},
        {3, 1500, false, 0.0f, {0, 0, 1, 0, 0, 1, 1}, 3, 1500},
        // A value that isn't offered chooses nothing, and its copy stays 0.
        {1.5f, 750, false, -0.05f, {0, 0, 0, 0, 0, 0, 2}, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.scale);
        DialogRig rig(QLatin1Char('.'), row.thresh);
        rig.form.x_scale_factor = row.scale, rig.form.max_x = row.max_x;
        rig.form.patient_defined = row.patient;
        Form11& f = rig.open11();
        EXPECT_EQ((std::vector<int>{f.Sec_Div_1.Value, f.Sec_Div_2.Value, f.Sec_Div_3.Value,
                                    f.Sec_Length_10.Value, f.Sec_Length_20.Value,
                                    f.Sec_Length_30.Value, f.Y_Range_Scroll.Min}),
                  row.ticks);
        EXPECT_EQ(std::pair(f.x_scale_factor_temp, f.max_x_temp),
                  std::pair(row.scale_copy, row.max_x_copy));
        const ComboBox& list = f.LangCombo;
        EXPECT_EQ((QStringList{f.Done.Caption, f.Y_Range_Text.Text, f.Patient_directory_text.Text,
                               list.items.join(','), list.items.value(list.ListIndex),
                               f.Label_warningB.Caption}),
                  (QStringList{message_text(row.patient ? 266 : 113), "2.", rig.data.path(),
                               "English,Deutsch,Svenska", "English", ""}));
        EXPECT_FALSE(f.Done.Enabled || f.changes_made);
    }
}

// Above a negative threshold a range of 0 passes and leaves a chart of no height; with the
// language unchanged, no file is written.
TEST(Form11, done_writes_the_chart_settings_and_their_caption) {
    DialogRig rig{QLatin1Char('.'), -1.0f};
    Form11& f = rig.open11();
    f.click(f.Sec_Div_3);
    f.click(f.Sec_Length_10);
    enter(f, f.Y_Range_Text, QStringLiteral("0"));
    f.click(f.Done);
    EXPECT_TRUE(f.unloaded && !QFile::exists(ini(rig)));
    EXPECT_EQ((std::vector<double>{rig.form.x_scale_factor, rig.form.max_x, rig.form.max_y,
                                   rig.form.min_y}),
              (std::vector<double>{3, 500, 0, 0}));
    EXPECT_EQ(rig.form.Label1.Caption, message_text(192));
}

TEST(Form11, a_language_choice_warns_and_is_stored_on_done) {
    DialogRig rig;
    Form11& f = rig.open11();
    const struct { int index; bool changed; } steps[] = {{2, true}, {0, false}, {1, true}};
    for (const auto& step : steps) {
        SCOPED_TRACE(step.index);
        f.choose(f.LangCombo, step.index);
        EXPECT_EQ(f.languageChanged, step.changed);
        EXPECT_EQ(f.Label_warningB.Caption, step.changed ? message_text(301) : QString());
        EXPECT_TRUE(f.Done.Enabled);
    }
    // A language alone is no change of the display: Cancel doesn't ask.
    EXPECT_FALSE(f.changes_made);
    f.scroll(f.Y_Range_Scroll, 30);
    f.click(f.Done);
    EXPECT_EQ(rig.form.language_file, QStringLiteral("Deutsch"));
    const QByteArray lines = contents(ini(rig));
    // The file takes the language before the display values change.
    EXPECT_TRUE(lines.contains("default language:Deutsch\r\n") && lines.contains("max y:2.0\r\n"))
        << lines.toStdString();
    EXPECT_DOUBLE_EQ(rig.form.max_y, 3.0);
}

// The directory chosen is stored for the next start; the console goes on with the one it
// started with.
TEST(Form11, a_new_data_directory_is_stored_for_the_next_start) {
    const struct { int answer; bool chosen, changed; } rows[] = {
        {vbCancel, true, false}, {vbOK, false, false}, {vbOK, true, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.answer + 10 * row.chosen);
        DialogRig rig;
        QTemporaryDir other;
        const QString chosen = row.chosen ? other.path() : QString();
        Form11& f = rig.open11();
        rig.fakes.boxes.answer(row.answer);
        rig.fakes.dialogs.choose_folder(chosen);
        f.click(f.Change_directory);
        EXPECT_TRUE(rig.fakes.boxes.shown.value(0) == message_text(205) &&
                    rig.fakes.boxes.styles.at(0) == (vbOKCancel | vbQuestion));
        EXPECT_EQ(f.Patient_directory_text.Text, row.changed ? chosen : rig.data.path());
        EXPECT_EQ(f.Done.Enabled, row.changed);
        EXPECT_FALSE(f.changes_made);
        f.click(row.changed ? f.Done : f.Cancel);  // Cancel: nothing to ask about
        EXPECT_TRUE(f.unloaded);
        EXPECT_EQ(rig.fakes.boxes.shown.last(), message_text(row.changed ? 194 : 205));
        EXPECT_EQ(rig.form.read_data_path(), row.changed ? chosen : QString());
        EXPECT_EQ(rig.form.data_directory, rig.data.path());
    }
}

}  // namespace
}  // namespace zel::test
