#include "history/history_printout.h"

#include <vector>

namespace zel {

namespace {

// The text's inset from the table's left edge and from the box, and the spare width of a
// column beyond its widest text.
constexpr float text_inset = 60;
constexpr float rule_inset = 30;
constexpr float column_spare = 240;
constexpr float line_step = 300;

float width_of(const Printer& printer, const QString& text) {
    return static_cast<float>(printer.text_width(text));
}

}  // namespace

QString fit_text(const Printer& printer, QString text, float width) {
    while (width_of(printer, text) > width) text.chop(1);
    return text;
}

void draw_session_list(Printer& printer, const HistoryPage& page, const ReportListView& list) {
    const int n = list.column_count();
    std::vector<float> column_width(n + 1);  // from 1
    const float x0 = static_cast<float>(printer.CurrentX());
    float y = static_cast<float>(printer.CurrentY());

    for (const QString* text : {&page.heading, &page.name, &page.medical_id}) {
        printer.set_CurrentX(x0 + text_inset);
        printer.set_CurrentY(y);
        printer.print_text(*text, true);
        y += line_step;
    }
    printer.print_text(QString(), true);

    // Each column as wide as its widest text; the heading of the date is wide by its blanks.
    for (int i = 1; i <= n; ++i) column_width[i] = width_of(printer, list.columns[i - 1].text);
    for (int item = 1; item <= list.item_count(); ++item)
        for (int i = 1; i <= n; ++i) {
            const float w = width_of(printer, list.cell(item, i - 1));
            if (w > column_width[i]) column_width[i] = w;
        }
    for (int i = 1; i <= n; ++i) column_width[i] += column_spare;

    printer.set_CurrentY(y + text_inset);
    printer.set_CurrentX(x0 + text_inset);
    const float table_top = y;
    float x = x0 + text_inset;
    for (int i = 1; i <= n; ++i) {
        printer.set_CurrentX(x);
        printer.print_text(fit_text(printer, list.columns[i - 1].text, column_width[i]), false);
        x += column_width[i];
    }
    const float table_right = x + text_inset;
    printer.print_text(QString(), true);

    const float text_height = static_cast<float>(printer.text_height(QStringLiteral("X")));
    float row_y = static_cast<float>(printer.CurrentY()) + text_height / 2;
    printer.line(x0, row_y, table_right, row_y);
    row_y += text_height / 2;

    for (int item = 1; item <= list.item_count(); ++item) {
        x = x0 + text_inset;
        printer.set_CurrentY(row_y);
        for (int i = 1; i <= n; ++i) {
            printer.set_CurrentX(x);
            printer.print_text(fit_text(printer, list.cell(item, i - 1), column_width[i]), false);
            x += column_width[i];
        }
        row_y += text_height * 1.5f;
    }
    const float table_bottom = row_y;

    printer.box(x0, table_top, table_right, table_bottom);
    x = x0 + rule_inset;
    for (int i = 1; i < n; ++i) {
        x += column_width[i];
        printer.line(x, table_top, x, table_bottom);
    }
}

}  // namespace zel
