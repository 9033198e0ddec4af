// The printed history: where the heading, the table's headings and rows, the rule, the box
// and the column rules fall on the page, in twips; the cases that print nothing or stop short.
// The fake printer's text is 100 twips a character and 240 high.
#include <gtest/gtest.h>

#include "history/history_printout.h"
#include "history_rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

using Op = FakePrinter::Op;

const StoredSession first{" 1", "04-Mar-26 at 09:05:07", "1.2", " 15", "Inhale", " 2", "Manual"};

QStringList headings() {
    QStringList out;
    for (int m : {156, 157, 158, 159, 160, 161, 300}) out.append(message_text(m));
    return out;
}

void expect_text(const Op& op, double x, double y, const QString& text, const char* what) {
    EXPECT_EQ(op.kind, QStringLiteral("text")) << what;
    EXPECT_DOUBLE_EQ(op.x, x) << what << " " << text.toStdString();
    EXPECT_DOUBLE_EQ(op.y, y) << what << " " << text.toStdString();
    EXPECT_EQ(op.text, text) << what;
}

void expect_line(const Op& op, const char* kind, double x1, double y1, double x2, double y2) {
    EXPECT_EQ(op.kind, QString::fromLatin1(kind));
    EXPECT_DOUBLE_EQ(op.x, x1) << kind;
    EXPECT_DOUBLE_EQ(op.y, y1) << kind;
    EXPECT_DOUBLE_EQ(op.x2, x2) << kind;
    EXPECT_DOUBLE_EQ(op.y2, y2) << kind;
}

TEST(HistoryPrintout, one_session_is_a_heading_line_a_rule_and_one_row_in_a_ruled_box) {
    HistoryRig rig;
    rig.write_history(1, {first});
    rig.history.Form_Load();
    rig.history.cmdPrint_Click();
    const std::vector<Op>& ops = rig.printer.ops;
    // dialog, 3 lines of heading and an empty one, 7 headings and the line end, the rule,
    // 7 cells, the box, 6 column rules, the end of the document.
    ASSERT_EQ(ops.size(), 1u + 4 + 8 + 1 + 7 + 1 + 6 + 1)
        << rig.printer.kinds().join(' ').toStdString();
    EXPECT_EQ(ops.front().kind, QStringLiteral("dialog"));
    expect_text(ops[1], 1500, 1440,
                QStringLiteral("ZEL Patient Session History (22-Nov-26 09:05:07)"), "heading");
    EXPECT_TRUE(ops[1].line_end);
    expect_text(ops[2], 1500, 1740, QStringLiteral("Name: Doe, Jane"), "name");
    expect_text(ops[3], 1500, 2040, QStringLiteral("Medical ID: A1"), "medical id");
    expect_text(ops[4], 0, 2280, QString(), "empty line");

    // Every column as wide as its heading and 240 more: the date's by its trailing blanks.
    const double lefts[] = {1500, 2440, 6180, 8220, 10160, 11600, 13040};
    for (int k = 0; k < 7; ++k) {
        expect_text(ops[5 + k], lefts[k], 2400, headings()[k], "heading of a column");
        EXPECT_FALSE(ops[5 + k].line_end);
    }
    expect_text(ops[12], 13040 + 1100, 2400, QString(), "end of the headings' line");
    EXPECT_TRUE(ops[12].line_end);
    expect_line(ops[13], "line", 1440, 2760, 14440, 2760);
    const QString cells[] = {"1", "04-Mar-26 at 09:05:07", "1.2", "15", "Inhale", "2", "Manual"};
    for (int k = 0; k < 7; ++k) expect_text(ops[14 + k], lefts[k], 2880, cells[k], "cell");
    // The row is 1.5 text heights deep.
    expect_line(ops[21], "box", 1440, 2340, 14440, 3240);
    const double rules[] = {2410, 6150, 8190, 10130, 11570, 13010};
    for (int k = 0; k < 6; ++k) expect_line(ops[22 + k], "line", rules[k], 2340, rules[k], 3240);
    EXPECT_EQ(ops.back().kind, QStringLiteral("end"));
    EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty());
}

TEST(HistoryPrintout, three_sessions_widen_their_columns_and_deepen_the_box) {
    HistoryRig rig;
    rig.write_history(
        3, {
               first,
               {" 2", "05-Mar-26 at 14:30:00", "1.5", " 20", "Inhale", " 0", "Automated"},
               {"Evening session 2", "05-Mar-26 at 18:00:59", "0.8", " 9", "Exhale", " 12",
                "Manual Overide"},
           });
    rig.history.Form_Load();
    rig.history.cmdPrint_Click();
    const std::vector<Op> texts = rig.printer.texts();
    ASSERT_EQ(texts.size(), 4u + 8 + 3 * 7);
    // The third session's id and gating mode are wider than their headings.
    const double lefts[] = {1500, 3440, 7180, 9220, 11160, 12600, 14040};
    const double row_tops[] = {2880, 3240, 3600};
    for (int row = 0; row < 3; ++row)
        for (int k = 0; k < 7; ++k)
            expect_text(texts[12 + row * 7 + k], lefts[k], row_tops[row],
                        rig.history.ListView1.cell(row + 1, k), "cell");
    const std::vector<Op> lines = rig.printer.lines();
    ASSERT_EQ(lines.size(), 7u);
    expect_line(lines[0], "line", 1440, 2760, 15740, 2760);
    const double rules[] = {3410, 7150, 9190, 11130, 12570, 14010};
    for (int k = 0; k < 6; ++k) expect_line(lines[1 + k], "line", rules[k], 2340, rules[k], 3960);
    ASSERT_EQ(rig.printer.boxes().size(), 1u);
    expect_line(rig.printer.boxes()[0], "box", 1440, 2340, 15740, 3960);
}

TEST(HistoryPrintout, a_long_name_is_printed_whole) {
    HistoryRig rig;
    rig.write_history(1, {first});
    rig.history.Form_Load();
    rig.form.patient_last_name = QStringLiteral("Vandenberghe-Oosterhuis-Castellanos");
    rig.history.cmdPrint_Click();
    ASSERT_GE(rig.printer.texts().size(), 2u);
    EXPECT_EQ(rig.printer.texts()[1].text,
              QStringLiteral("Name: Vandenberghe-Oosterhuis-Castellanos, Jane"));
}

TEST(HistoryPrintout, prints_nothing_when_there_is_nothing_or_the_operator_cancels) {
    struct Case {
        const char* what;
        bool sessions;
        bool cancel;
        QStringList kinds;
        QStringList messages;
    };
    const Case cases[] = {
        {"an empty history", false, false, {}, {message_text(199)}},
        {"a cancelled dialog", true, true, {"dialog", "end"}, {}},
    };
    for (const Case& c : cases) {
        HistoryRig rig;
        if (c.sessions) rig.write_history(1, {first});
        rig.printer.cancel = c.cancel;
        rig.history.Form_Load();
        rig.history.cmdPrint_Click();
        EXPECT_EQ(rig.printer.kinds(), c.kinds) << c.what;
        EXPECT_EQ(rig.fakes.boxes.shown, c.messages) << c.what;
    }
    HistoryRig rig;
    rig.history.Form_Load();
    rig.history.cmdPrint_Click();
    ASSERT_EQ(rig.fakes.boxes.styles.size(), 1u);
    EXPECT_EQ(rig.fakes.boxes.styles[0], vbInformation);
}

TEST(HistoryPrintout, a_failure_on_the_page_sends_out_what_was_drawn_without_a_message) {
    HistoryRig rig;
    rig.write_history(1, {first});
    rig.history.Form_Load();
    rig.printer.fail_at(6);  // the second column's heading
    rig.history.cmdPrint_Click();
    EXPECT_EQ(rig.printer.kinds(),
              QStringList({"dialog", "text", "text", "text", "text", "text", "end"}));
    EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty());
    // The next click starts a page of its own at one inch.
    rig.printer.fail_at(0);
    rig.printer.ops.clear();
    rig.history.cmdPrint_Click();
    ASSERT_GE(rig.printer.ops.size(), 2u);
    EXPECT_DOUBLE_EQ(rig.printer.ops[1].x, 1500);
    EXPECT_DOUBLE_EQ(rig.printer.ops[1].y, 1440);
}

TEST(HistoryPrintout, fit_text_cuts_characters_from_the_end_until_the_text_fits) {
    FakePrinter printer;
    struct Case {
        const char* text;
        float width;
        const char* fitted;
    };
    const Case cases[] = {
        {"Inhale", 600, "Inhale"},
        {"Inhale", 599, "Inhal"},
        {"Inhale", 350, "Inh"},
        {"Inhale", 99, ""},
        {"", 0, ""},
        {"A  ", 250, "A "},
    };
    for (const Case& c : cases)
        EXPECT_EQ(fit_text(printer, QString::fromLatin1(c.text), c.width),
                  QString::fromLatin1(c.fitted))
            << c.text << " " << c.width;
}

}  // namespace
}  // namespace zel::test
