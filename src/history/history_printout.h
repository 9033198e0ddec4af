#pragma once
// The printed page of a patient's session history: three lines of heading, then a ruled
// table sized to its contents, with a column per column of the list and a row per session.
// Every place is in twips. There is no second page: a table too long or too wide for the
// paper is left to the printer.
#include <QString>

#include "history/report_list_view.h"
#include "platform/printer.h"

namespace zel {

struct HistoryPage {
    QString heading;     // "ZEL Patient Session History (" date " " time ")"
    QString name;        // "Name: " last ", " first
    QString medical_id;  // "Medical ID: " id
};

// Draws the page from the printer's current position, its top left corner.
void draw_session_list(Printer& printer, const HistoryPage& page, const ReportListView& list);

// The text cut at its end until it is no wider than `width` on the printer.
QString fit_text(const Printer& printer, QString text, float width);

}  // namespace zel
