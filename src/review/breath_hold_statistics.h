#pragma once
// The review's "Breath-hold Statistics" window: the holds of the curves shown, one row each and
// a summary row per curve, and a chart of each hold's mean level with the span from its lowest
// to its highest volume. The table can be copied and saved as a CSV file. The window holds the
// figures of the moment it was opened.
#include <QString>
#include <vector>

#include "app/control.h"
#include "review/hold_statistics.h"
#include "review/patient_curves.h"
#include "review/statistics_table.h"

namespace zel {

// A curve of the chart, in the review's colour.
struct StatisticsCurve {
    QString title;
    Rgb colour;
    double threshold = 0;
    std::vector<HoldFigures> holds;
};

class BreathHoldStatistics {
  public:
    // The checked curves of `review`, in its order.
    BreathHoldStatistics(ReviewPlatform platform, const PatientCurves& review);

    ReviewPlatform platform;
    QString Caption;
    Control cmdCopy, cmdSave, cmdClose;
    StatisticsTable table;
    std::vector<StatisticsCurve> curves;
    QString chart_x_label, chart_y_label;
    bool unloaded = false;

    // The table as the clipboard takes it, to paste into a spreadsheet.
    QString copy_text() const;
    // Asks for a file and writes the table to it as CSV, whole or not at all; a failure says
    // why in a message box.
    void cmdSave_Click();
    void cmdClose_Click();
};

}  // namespace zel
