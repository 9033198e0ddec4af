// The session history window of the patient Doe, Jane, A1 over fakes, with the patient's
// "session.ini" written as the console writes it: its rows, its layout on resize, and the
// printed page; the window on screen is driven by scripts/e2e-history-pdf.sh. The fake
// printer's text is 100 twips a character, 240 high.
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "data/session_history_file.h"
#include "fakes/fake_printer.h"
#include "fakes/files.h"
#include "fakes/rig.h"
#include "history/dialog_session_history.h"
#include "history/history_printout.h"
#include "language/messages.h"
#include "platform/qt_printer.h"

namespace zel::test {
namespace {

using Row = std::vector<QString>;
// One session's values as they stand in the file, blanks of printed numbers included; a null
// value stands for a key the file lacks.
using StoredSession = std::array<QByteArray, 7>;

const StoredSession first{" 1", "04-Mar-26 at 09:05:07", "1.2", " 15", "Inhale", " 2", "Manual"};
const Row first_row{"1", "04-Mar-26 at 09:05:07", "1.2", "15", "Inhale", "2", "Manual"};

// The file with "TOTAL_SESSIONS" = total and these sections, numbered from 1.
QByteArray history_text(int total, const std::vector<StoredSession>& sessions) {
    const char* const keys[] = {"ID", "Date", "Threshold", "Breath_Hold_Duration",
                                "Trigger_on_Inhale", "Number_of_breath_holds", "Gating Mode"};
    QByteArray text;
    for (size_t n = 0; n < sessions.size(); ++n) {
        text += "[" + session_section(int(n) + 1).toLatin1() + "]\r\n";
        for (int k = 0; k < 7; ++k)
            if (!sessions[n][k].isNull())
                text += QByteArray(keys[k]) + "=" + sessions[n][k] + "\r\n";
    }
    return text + "[HEADER]\r\nTOTAL_SESSIONS= " + QByteArray::number(total) + "\r\n";
}

struct HistoryRig : Rig {
    HistoryRig() { as_patient(form, app_data.path(), QStringLiteral("1")); }
    void write_file(const QByteArray& text) {
        write(app_data.path() + QStringLiteral("/Doe_Jane_A1/session.ini"), text);
    }
    // The rows as the window shows them: the item's text and its six sub-items.
    std::vector<Row> rows() const {
        std::vector<Row> out;
        for (int item = 1; item <= history.ListView1.item_count(); ++item) {
            out.emplace_back();
            for (int k = 0; k < 7; ++k) out.back().push_back(history.ListView1.cell(item, k));
        }
        return out;
    }

    FakePrinter printer;
    DialogSessionHistory history{form, printer};
};

TEST(SessionList, shows_each_session_as_stored_in_file_order_or_nothing_without_a_count) {
    StoredSession partial = first;
    partial[6] = partial[2] = QByteArray();  // written before the key existed
    struct Case {
        const char* what; QByteArray file; std::vector<Row> rows; const char* medical_id = "A1";
    };
    const Case cases[] = {
        {"three sessions",
         // Saved under another language: its trigger word stays.
         history_text(3, {first, {" 2", "05-Mar-26 at 14:30:00", "1.5", " 20", "Einatmen", " 0",
                                  "Automated"},
                          {"Evening", "05-Mar", "0.8", " 9", "Exhale", " 12", "Manual Overide"}}),
         {first_row, {"2", "05-Mar-26 at 14:30:00", "1.5", "20", "Einatmen", "0", "Automated"},
          {"Evening", "05-Mar", "0.8", "9", "Exhale", "12", "Manual Overide"}}},
        // The count was edited by hand: two sessions more than the file holds.
        {"missing keys and sections", history_text(3, {partial}),
         {{"1", "04-Mar-26 at 09:05:07", "", "15", "Inhale", "2", ""}, Row(7), Row(7)}},
        // Without sessions: no headings and no message either.
        {"no file", QByteArray(), {}},
        {"no header", "[" + session_section(1).toLatin1() + "]\r\nID= 1\r\n", {}},
        {"a count of 0", "[HEADER]\r\nTOTAL_SESSIONS= 0\r\n", {}},
        {"an empty count", "[HEADER]\r\nTOTAL_SESSIONS=\r\n", {}},
        {"a count beyond 16 bits", "[HEADER]\r\nTOTAL_SESSIONS= 40000\r\n", {}},
        {"another patient's history", history_text(1, {first}), {}, "B2"},
    };
    for (const Case& c : cases) {
        HistoryRig rig;
        if (!c.file.isNull()) rig.write_file(c.file);
        rig.form.patient_medical_id = QString::fromLatin1(c.medical_id);
        rig.history.Form_Load();
        EXPECT_EQ(rig.rows(), c.rows) << c.what;
        EXPECT_EQ(rig.history.ListView1.column_count(), c.rows.empty() ? 0 : 7) << c.what;
        EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty()) << c.what;
    }
}

// Found by fuzzing: a file of one section whose count says 32767 kept the window reading the
// file once for every value, 229,369 times, for longer than the fuzzer's ten seconds.
TEST(SessionList, a_count_far_beyond_its_sections_lists_every_row_from_one_read) {
    HistoryRig rig;
    rig.write_file(history_text(32767, {first}));
    rig.history.Form_Load();
    const std::vector<Row> rows = rig.rows();
    ASSERT_EQ(rows.size(), 32767u);
    EXPECT_EQ(rows.front(), first_row);
    EXPECT_EQ(rows.back(), Row(7));
}

TEST(SessionList, controls_grow_with_the_window_in_proportion) {
    struct Case { double width_factor, height_factor; bool minimized; };
    const Case cases[] = {{2, 1.5, false}, {0.5, 0.75, false}, {0.1, 0.1, true}};
    for (const Case& c : cases) {
        HistoryRig rig;
        DialogSessionHistory& h = rig.history;
        h.Form_Load();
        const Control list = h.ListView1, done = h.DoneButton;
        h.ScaleWidth *= c.width_factor;
        h.ScaleHeight *= c.height_factor;
        h.minimized = c.minimized;
        h.Form_Resize();
        const double xs = c.minimized ? 1 : c.width_factor, ys = c.minimized ? 1 : c.height_factor;
        const Control& now = h.ListView1;
        EXPECT_EQ((std::array{now.Left, now.Top, now.Width, now.Height, h.DoneButton.Left,
                              h.DoneButton.Top}),
                  (std::array{list.Left * xs, list.Top * ys, list.Width * xs, list.Height * ys,
                              done.Left * xs, done.Top * ys})) << c.width_factor;
    }
}

// Each drawing operation as one line: "text x y <text>" with " /" for a line end,
// "line x1 y1 x2 y2", "box x1 y1 x2 y2", or its kind alone.
QStringList drawn(const std::vector<FakePrinter::Op>& ops) {
    QStringList out;
    for (const FakePrinter::Op& op : ops) {
        const QString at = QStringLiteral("%1 %2 %3").arg(op.kind).arg(op.x).arg(op.y);
        if (op.kind == QStringLiteral("text"))
            out << at + ' ' + op.text + (op.line_end ? " /" : "");
        else if (op.kind == QStringLiteral("line") || op.kind == QStringLiteral("box"))
            out << at + QStringLiteral(" %1 %2").arg(op.x2).arg(op.y2);
        else
            out << op.kind;
    }
    return out;
}

// A column as wide as its heading and 240 more, the date's by its trailing blanks; the third
// session's id and gating mode are wider than their headings; a long name is printed whole.
TEST(HistoryPrintout, a_heading_then_the_rows_in_a_ruled_box_with_columns_as_wide_as_their_text) {
    const char* const last_name = "Vandenberghe-Oosterhuis-Castellanos";
    const double lefts[] = {1500, 3440, 7180, 9220, 11160, 12600, 14040}, right = 15740;
    HistoryRig rig;
    rig.write_file(history_text(
        3, {first,
            {" 2", "05-Mar-26 at 14:30:00", "1.5", " 20", "Inhale", " 0", "Automated"},
            {"Evening session 2", "05-Mar-26 at 18:00:59", "0.8", " 9", "Exhale", " 12",
             "Manual Overide"}}));
    rig.history.Form_Load();
    rig.form.patient_last_name = QString::fromLatin1(last_name);
    rig.history.cmdPrint_Click();
    QStringList expected = {"dialog",
                            "text 1500 1440 ZEL Patient Session History (22-Nov-26 09:05:07) /",
                            QStringLiteral("text 1500 1740 Name: %1, Jane /").arg(last_name),
                            "text 1500 2040 Medical ID: A1 /", "text 0 2280  /"};
    int k = 0;
    for (int heading : {156, 157, 158, 159, 160, 161, 300})
        expected << QStringLiteral("text %1 2400 ").arg(lefts[k++]) + message_text(heading);
    expected << QStringLiteral("text %1 2400  /").arg(lefts[6] + 1100)
             << QStringLiteral("line 1440 2760 %1 2760").arg(right);
    for (int row = 0; row < 3; ++row)
        for (k = 0; k < 7; ++k)
            expected << QStringLiteral("text %1 %2 ").arg(lefts[k]).arg(2880 + 360 * row) +
                            rig.history.ListView1.cell(row + 1, k);
    const int bottom = 3240 + 360 * 2;  // each row 1.5 text heights deep
    expected << QStringLiteral("box 1440 2340 %1 %2").arg(right).arg(bottom);
    for (k = 1; k < 7; ++k)
        expected << QStringLiteral("line %1 2340 %1 %2").arg(lefts[k] - 30).arg(bottom);
    EXPECT_EQ(drawn(rig.printer.ops), expected << "end");
    EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty());
}

TEST(HistoryPrintout, an_empty_history_a_cancel_or_a_failure_cut_the_page_short) {
    struct Case {
        const char* what; bool sessions, cancel; int fail_at;
        QStringList kinds, messages; std::vector<int> styles;
    };
    const Case cases[] = {
        {"an empty history", false, false, 0, {}, {message_text(199)}, {vbInformation}},
        {"a cancelled dialog", true, true, 0, {"dialog", "end"}, {}, {}},
        // What was drawn before the second column's heading still goes out, without a message.
        {"a failing page", true, false, 6, {"dialog", "text", "text", "text", "text", "text",
                                            "end"}, {}, {}},
    };
    for (const Case& c : cases) {
        HistoryRig rig;
        if (c.sessions) rig.write_file(history_text(1, {first}));
        rig.printer.cancel = c.cancel;
        rig.printer.fail_at(c.fail_at);
        rig.history.Form_Load();
        rig.history.cmdPrint_Click();
        EXPECT_EQ(rig.printer.kinds(), c.kinds) << c.what;
        EXPECT_EQ(rig.fakes.boxes.shown, c.messages) << c.what;
        EXPECT_EQ(rig.fakes.boxes.styles, c.styles) << c.what;
        if (!c.fail_at) continue;
        rig.printer.fail_at(0);  // the next click starts a page of its own at one inch
        rig.printer.ops.clear();
        rig.history.cmdPrint_Click();
        EXPECT_EQ(drawn(rig.printer.ops).value(1).left(15), "text 1500 1440 ");
    }
}

TEST(HistoryPrintout, fit_text_cuts_characters_from_the_end_until_the_text_fits) {
    FakePrinter printer;
    struct Case { const char* text; float width; const char* fitted; };
    const Case cases[] = {{"Inhale", 600, "Inhale"}, {"Inhale", 599, "Inhal"},
                          {"Inhale", 350, "Inh"},    {"Inhale", 99, ""},
                          {"", 0, ""},               {"A  ", 250, "A "}};
    for (const Case& c : cases)
        EXPECT_EQ(fit_text(printer, QString::fromLatin1(c.text), c.width),
                  QString::fromLatin1(c.fitted))
            << c.text << " " << c.width;
}

// The printer through Qt, printing to a PDF file as on a machine without a printer: the page
// is a PDF, twips measure as twips, and a document ended without drawing writes nothing.
TEST(QtPrinter, measures_in_twips_fits_the_history_table_upright_and_draws_it_into_a_pdf) {
    QtPrinter printer;
    // An 8 point line is 160 twips of type and a little more; blanks take their room.
    EXPECT_EQ(printer.font_size(), 8);
    EXPECT_GT(printer.text_height(QStringLiteral("X")), 160);
    EXPECT_LT(printer.text_height(QStringLiteral("X")), 240);
    EXPECT_GT(printer.text_width(QStringLiteral("Date and Time      ")),
              printer.text_width(QStringLiteral("Date and Time")) + 150);
    for (QPageSize::PageSizeId size : {QPageSize::A4, QPageSize::Letter}) {
        printer.device().setPageSize(QPageSize(size));
        EXPECT_GT(printer.page_height(), 14000);  // less its margins
        const QString row[] = {"12", "23.11.2026 at 14:17:52", "1.5", "15", "Inhale", "12",
                               "Manual Overide"};
        double right = 1440 + 60 + 60;
        int k = 0;
        for (int heading : {156, 157, 158, 159, 160, 161, 300})
            right += std::max(printer.text_width(message_text(heading)),
                              printer.text_width(row[k++])) + 240;
        EXPECT_LT(right, printer.page_width()) << int(size);
    }
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("history.pdf"));
    printer.device().setOutputFormat(QPrinter::PdfFormat);
    printer.device().setOutputFileName(path);
    printer.end_document();
    EXPECT_FALSE(QFile::exists(path)) << "a document without a page went out";

    ReportListView list;
    list.add_item(1, QStringLiteral("1"));
    list.add_sub_item(1, 1, QStringLiteral("04.03.26 at 09:05:07"));
    list.add_column(1, QStringLiteral("Session"));
    list.add_column(2, QStringLiteral("Date and Time      "), 2400);
    printer.set_CurrentX(1440);
    printer.set_CurrentY(1440);
    draw_session_list(printer,
                      {QStringLiteral("ZEL Patient Session History (04.03.26 09:05:07)"),
                       QStringLiteral("Name: Doe, Jane"), QStringLiteral("Medical ID: A1")},
                      list);
    EXPECT_GT(printer.CurrentY(), 1440 + 900);  // the last column rule leaves it at its foot
    printer.end_document();
    const QByteArray pdf = contents(path);
    EXPECT_TRUE(pdf.startsWith("%PDF-")) << pdf.left(16).toStdString();
    EXPECT_GT(pdf.size(), 1000);
}

}  // namespace
}  // namespace zel::test
