#pragma once
// The review's breath-hold statistics on screen: the table, the chart of the holds' levels and
// the Copy, Save as CSV and Close buttons of BreathHoldStatistics.
#include <QWidget>
#include <functional>
#include <memory>

#include "platform/qt_file_dialogs.h"
#include "platform/qt_system.h"
#include "review/breath_hold_statistics.h"

class QCustomPlot;
class QPushButton;
class QTableWidget;

namespace zel {

class BreathHoldStatisticsView final : public QWidget {
  public:
    using RunEvent = std::function<void(const char* source, const std::function<void()>& handler)>;
    // A window of its own over `parent`, on the curves that `review` shows now.
    BreathHoldStatisticsView(const PatientCurves& review, Locale& locale, RunEvent run_event,
                             QWidget* parent = nullptr);
    ~BreathHoldStatisticsView() override;

    BreathHoldStatistics& model() { return *statistics; }
    QTableWidget& table() { return *table_widget; }
    QCustomPlot& chart() { return *chart_widget; }

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    QtFileDialogs dialogs;
    QtMessageBoxes boxes;
    std::unique_ptr<BreathHoldStatistics> statistics;
    RunEvent run_event;
    QTableWidget* table_widget = nullptr;
    QCustomPlot* chart_widget = nullptr;
    int running = 0;           // handlers under way, one within another
    bool close_asked = false;  // closed while one was

    void run(const char* source, const std::function<void()>& handler);
    void fill_table();
    void fill_chart();
};

}  // namespace zel
