#pragma once
// The review window's chart on screen: draws the elements of a ReviewChart and turns the mouse
// into zoom, pan and the measuring cursor that the logic reads.
#include <qcustomplot.h>

#include <cstdint>
#include <functional>

#include "review/review_chart.h"

namespace zel {

class ReviewChartWidget final : public QCustomPlot {
  public:
    ReviewChartWidget(ReviewChart& model, QWidget* parent);

    // Called by the window's refresh: redraws when the elements changed, returns to the model's
    // range when it was set anew, and takes the grid, axis labels and mouse mode.
    void sync();
    // Back to the range the model set.
    void reset_zoom();

    // The chart's cursor event, in axis units: each mouse move over the plot area in any mode,
    // and in measure mode the press and the release of the left button.
    std::function<void(double x, double y)> cursor_moved;

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    ReviewChart& model;
    bool synced = false;
    uint64_t synced_revision = 0, synced_view_revision = 0;
    int32_t applied_mode = 0;
    bool measuring = false;
    bool replot_when_shown = false;

    void show_model_range();
    // The range that the plot's own drag or zoom rectangle left on the axes goes to the model,
    // which keeps it within bounds, and the axes take the model's.
    void take_gesture();
    void apply_track_mode();
    bool over_plot(QPointF pos) const;
    void report(QPointF pos);
};

}  // namespace zel
