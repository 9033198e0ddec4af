// The rules the dialogs share: the chart widened for a threshold, which rule and message each
// numeric field applies, and when Cancel asks before changes are lost.
#include "dialogs/entry_rules.h"

#include <gtest/gtest.h>

#include <ostream>
#include <utility>
#include <vector>

#include "dialog_rig.h"

namespace zel::test {
namespace {

TEST(EntryRules, a_threshold_beyond_three_quarters_widens_the_chart_symmetrically) {
    // On a chart from 2 down to -1.
    const struct { float thresh; double max_y, min_y; } rows[] = {
        {1.5f, 2.0, -1.0},  {-1.5f, 2.0, -1.0}, {0.0f, 2.0, -1.0},   {1.6f, 2.0, -2.0},
        {1.7f, 2.1, -2.1},  {-1.7f, 2.1, -2.1}, {-9.9f, 12.4, -12.4},
        // 1.25 times, rounded to a tenth with ties upwards: 3.75 and -3.75 differ.
        {3.0f, 3.8, -3.8},  {-3.0f, 3.7, -3.7},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.thresh);
        double max_y = 2.0, min_y = -1.0;
        widen_chart_for_threshold(max_y, min_y, row.thresh);
        EXPECT_EQ(std::pair(max_y, min_y), std::pair(row.max_y, row.min_y));
    }
}

// ---- The numeric fields of the dialogs --------------------------------------------------------

enum class Field { hold5, thresh5, hold12, thresh12, range11 };

// What a numeric field shows after the operator's action: its text, the warnings of its
// dialog, the value kept for Done, its scroll bar, and whether Done may be pressed.
struct Outcome {
    QString shown, message;
    float kept;
    int bar;
    bool done;
    bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& o) {
    return out << '"' << o.shown.toStdString() << "\" \"" << o.message.toStdString() << "\" "
               << o.kept << ' ' << o.bar << (o.done ? " done" : " held");
}

// Opens the field's dialog on the rig, lets `act` work on the field, and reads the outcome.
template <class Act>
Outcome on_field(DialogRig& rig, Field field, Act act) {
    const auto run = [&](auto& f, TextBox& box, ScrollBar& bar, const Control& done,
                         const auto& kept, std::initializer_list<const Control*> warnings) {
        act(f, box, bar, done);
        QString message;
        for (const Control* warning : warnings) message += warning->Caption;
        return Outcome{box.Text, message, static_cast<float>(kept), bar.Value, done.Enabled};
    };
    if (field == Field::hold5 || field == Field::thresh5) {
        Form5& f = rig.open5();
        return field == Field::hold5 ? run(f, f.BreathHold_Text, f.BreathHold_Scroll,
                                           f.button_done, f.duration_temp, {&f.Label_message})
                                     : run(f, f.Threshold_Text, f.Threshold_Scroll,
                                           f.button_done, f.threshold_temp, {&f.Label_message});
    }
    if (field == Field::hold12 || field == Field::thresh12) {
        Form12& f = rig.open12();
        const std::initializer_list<const Control*> warnings{&f.Label_warningA, &f.Label_warningB};
        return field == Field::hold12 ? run(f, f.BreathHold_Text, f.BreathHold_Scroll,
                                            f.Button_Save, f.duration_temp, warnings)
                                      : run(f, f.Threshold_Text, f.Threshold_Scroll,
                                            f.Button_Save, f.threshold_temp, warnings);
    }
    Form11& f = rig.open11();
    return run(f, f.Y_Range_Text, f.Y_Range_Scroll, f.Done, f.max_y_temp, {&f.Label_warning});
}

// The duration's range is tested before its rounding and the threshold's after it, in both
// dialogs that take them; the chart's range must stand strictly above the signed threshold.
// A refused entry puts back the value kept.
TEST(NumericFields, each_field_applies_its_own_rule_and_message) {
    enum Kind { hold, thresh, range };
    const std::vector<Field> fields_of[] = {
        {Field::hold5, Field::hold12}, {Field::thresh5, Field::thresh12}, {Field::range11}};
    const struct {
        Kind kind;
        const char* typed;
        const char* shown;
        float kept;
        int bar, message;
        char separator = '.';
        float thresh = 1.2f;
    } rows[] = {
        {hold, "99", "99", 99, 99, 0},          {hold, "1", "1", 1, 1, 0},
        {hold, "98.6", "99", 99, 99, 0},        {hold, "1.4", "1", 1, 1, 0},
        {hold, "99.4", "15", 15, 15, 185},      {hold, "0.6", "15", 15, 15, 185},
        {hold, "abc", "15", 15, 15, 186},       {hold, "98,6", "99", 99, 99, 0, ','},
        {hold, "1.5", "15", 15, 15, 186, ','},
        // The other machine's separator is refused, also where it would group thousands: a
        // file written from the value must read back.
        {hold, " 7 ", "7", 7, 7, 0},            {hold, "1e1", "10", 10, 10, 0},
        {hold, "1,000", "15", 15, 15, 186},     {hold, "1.000,5", "15", 15, 15, 186, ','},
        {thresh, ".", "1.2", 1.2f, 12, 186},  {thresh, "10.04", "10", 10, 100, 0},
        {thresh, "10.05", "1.2", 1.2f, 12, 188}, {thresh, "-10.05", "-10", -10, -100, 0},
        {thresh, "-10.06", "1.2", 1.2f, 12, 188}, {thresh, "0.35", "0.4", 0.4f, 4, 0},
        {thresh, "-1.75", "-1.7", -1.7f, -17, 0}, {thresh, ".5", "0.5", 0.5f, 5, 0},
        {thresh, "x1", "1.2", 1.2f, 12, 186},   {thresh, "-0,25", "-0,2", -0.2f, -2, 0, ','},
        {thresh, "1.5", "1,2", 1.2f, 12, 186, ','},
        {range, "1.3", "1.3", 1.3f, 13, 0},     {range, "1.2", "2", 2, 20, 189},
        {range, "1.24", "2", 2, 20, 189},       {range, "1.25", "1.3", 1.3f, 13, 0},
        {range, "20.04", "20", 20, 200, 0},     {range, "20.06", "2", 2, 20, 189},
        {range, "abc", "2", 2, 20, 186},        {range, "2,5", "2,5", 2.5f, 25, 0, ','},
        {range, "2.5", "2", 2, 20, 186, ','},
        // Above a negative threshold a range of 0 passes; the bar rests on the threshold's size.
        {range, "0", "0", 0, 11, 0, '.', -1.0f}, {range, "-0.9", "-0.9", -0.9f, 11, 0, '.', -1.0f},
        {range, "-1", "2", 2, 20, 189, '.', -1.0f},
    };
    for (const auto& row : rows) {
        for (const Field field : fields_of[row.kind]) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(field) << ' ' << row.typed);
            DialogRig rig(QLatin1Char(row.separator), row.thresh);
            const Outcome outcome =
                on_field(rig, field, [&](auto& f, TextBox& box, ScrollBar&, const Control&) {
                    enter(f, box, QString::fromLatin1(row.typed));
                });
            EXPECT_EQ(outcome, (Outcome{QString::fromLatin1(row.shown),
                                        row.message ? message_text(row.message) : QString(),
                                        row.kept, row.bar, true}));
        }
    }
}

// Done stays off from any key but Enter until the field has been tested, by Enter or by
// leaving it; an emptied field is left empty, with no warning, and keeps the value it had.
TEST(NumericFields, a_key_holds_done_until_the_field_is_tested_and_empty_is_no_entry) {
    const struct { Field field; float kept; int bar; } rows[] = {
        {Field::hold5, 15, 15},      {Field::thresh5, 1.2f, 12}, {Field::hold12, 15, 15},
        {Field::thresh12, 1.2f, 12}, {Field::range11, 2, 20}};
    for (const auto& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.field));
        DialogRig rig;
        std::vector<bool> done;
        const Outcome outcome =
            on_field(rig, row.field, [&](auto& f, TextBox& box, ScrollBar&, const Control& d) {
                for (const int key : {int{'5'}, 13, 8}) {  // 8: backspace
                    f.key_press(box, key);
                    done.push_back(d.Enabled);
                }
                type(f, box, QString());
                f.lost_focus(box);
            });
        EXPECT_EQ(done, (std::vector<bool>{false, true, false}));
        EXPECT_EQ(outcome, (Outcome{QString(), QString(), row.kept, row.bar, true}));
    }
}

// A move of a scroll bar puts a good value in its field, so the field's warning goes.
TEST(NumericFields, moving_a_bar_writes_its_field_and_the_value) {
    const struct {
        Field field;
        int value;
        const char* shown;
        float kept;
        char separator = '.';
    } rows[] = {
        {Field::hold5, 42, "42", 42},         {Field::thresh5, -37, "-3.7", -3.7f},
        {Field::hold12, 16, "16", 16},        {Field::thresh12, -5, "-0.5", -0.5f},
        {Field::thresh12, 13, "1,3", 1.3f, ','}, {Field::range11, 35, "3.5", 3.5f},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.shown);
        DialogRig rig{QLatin1Char(row.separator)};
        const Outcome outcome =
            on_field(rig, row.field, [&](auto& f, TextBox& box, ScrollBar& bar, const Control&) {
                enter(f, box, QStringLiteral("abc"));
                f.scroll(bar, row.value);
            });
        EXPECT_EQ(outcome, (Outcome{row.shown, QString(), row.kept, row.value, true}));
    }
}

Control& cancel_of(Form5& f) { return f.button_cancel; }
Control& cancel_of(Form12& f) { return f.Cancel; }
Control& cancel_of(Form11& f) { return f.Cancel; }

// Nothing edited reaches the console.
TEST(DialogCancel, asks_only_after_a_change_and_no_keeps_the_dialog_open) {
    // Buttons of the question: 0 Yes, 1 No.
    const struct { bool change; int answer; bool closed; } rows[] = {
        {false, 1, true}, {true, 0, true}, {true, 1, false}};
    for (const Field field : {Field::hold5, Field::hold12, Field::range11}) {
        for (const auto& row : rows) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(field) << ' ' << row.change
                                            << row.answer);
            DialogRig rig;
            rig.form.form12_open = true;
            bool unloaded = false;
            on_field(rig, field, [&](auto& f, TextBox&, ScrollBar& bar, const Control&) {
                if (row.change) f.scroll(bar, 30);
                rig.fakes.windows.answer(row.answer);
                f.click(cancel_of(f));
                unloaded = f.unloaded;
            });
            EXPECT_EQ(rig.fakes.windows.log.contains("ask " + message_text(353)), row.change);
            EXPECT_EQ(unloaded, row.closed);
            const bool cancelled = field == Field::hold5    ? rig.form.form5->Cancel_status
                                   : field == Field::hold12 ? rig.form.patient_settings_cancel
                                                            : unloaded;
            EXPECT_EQ(cancelled, row.closed);
            EXPECT_EQ(field == Field::hold12 ? rig.form.form12_open : !unloaded, !row.closed);
            EXPECT_TRUE(rig.form.duration == 15 && rig.form.max_y == 2 &&
                        !rig.form.patient_defined);
        }
    }
}

}  // namespace
}  // namespace zel::test
