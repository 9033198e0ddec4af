#pragma once
// The review window's chart as the logic sees it: numbered elements, each a polyline with its
// colour, line type, width and visibility, the range the chart opens on and its mouse mode.
// The view draws the elements and reports the cursor; it keeps no element of its own.
#include <QString>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/chart_surface.h"

namespace zel {

struct ChartElement {
    std::vector<double> x, y;  // the points in the order plotted; a line joins each to the next
    Rgb color{0, 0, 0};
    int16_t line_type = 0;  // 0 solid, 2 dotted
    int16_t width = 1;      // pixels; 1 is what a new element gets
    bool show = true;
};

// Mouse modes of the chart.
enum TrackModes : int32_t { track_zoom = 2, track_pan = 3, track_pan_x = 4, track_measure = 6 };

struct ChartRange {
    double x_min = 0, x_max = 1, y_min = -2, y_max = 2;
    friend bool operator==(const ChartRange&, const ChartRange&) = default;
};

class ReviewChart {
public:
    ReviewChart();

    // Removes every element but element 0, which always stands and is never plotted into.
    void ClearGraph();
    // Adds an element at the end and makes it the current one.
    void AddElement();
    // Removes the element; the ones behind it move down one number. Element 0 and numbers
    // beyond the last stay as they are.
    void DeleteElement(int16_t element);
    // Appends a point to the element; nothing happens for a number that has no element.
    // Inline: a review of five long curves plots over a million points.
    [[gnu::always_inline]] void PlotXY(double x, double y, int16_t element) {
        if (element < 0 || element > element_count()) return;
        ChartElement& e = *list[static_cast<size_t>(element)];
        e.x.push_back(x);
        e.y.push_back(y);
        ++revision;
    }
    // Room for that many points of the element in all, for an element whose size is known.
    void ReservePoints(int16_t element, size_t points);
    // The range shown, which the view also returns to when asked to reset its zoom.
    void SetRange(double x_min, double x_max, double y_min, double y_max);

    // Properties of the current element.
    void Element(int16_t element);
    void ElementLineColor(Rgb color);
    void ElementLinetype(int16_t type);
    void ElementWidth(int16_t width);
    void ElementShow(bool shown);

    // The range shown now: the one SetRange gave, then as the operator's zoom and pan leave it.
    // Every gesture stays within gesture_bounds(), so that each value the cursor reads there
    // converts without overflow however often the operator zooms out or pans.
    const ChartRange& view_range() const { return shown_view; }
    // Around the range SetRange gave, which it always holds: a hundred times its width and
    // height (at least a second and a litre), and no further than a million either way.
    ChartRange gesture_bounds() const;
    // A range that a zoom rectangle or a drag asks for, taken no wider than the bounds and
    // moved within them, so that a pan stops at their edge. A range that is no number leaves
    // the view as it was.
    void gesture_range(const ChartRange& wanted);
    // The right click in zoom mode: twice the width and height about the point, within bounds.
    void zoom_out_at(double x, double y);
    // Back to the range SetRange gave.
    void reset_view();
    // The point brought within the bounds, as the cursor reports it.
    void keep_in_bounds(double& x, double& y) const;

    // The press point in thousandths of an axis unit, and 1 while the left button is held in
    // measure mode. The view keeps these current before it reports the cursor.
    void GetTrackInfo(double& press_x, double& press_y, double& state) const;

    bool ShowGrid = false;
    QString XLabel, YLabel;
    int32_t TrackMode = track_zoom;

    // What the view reads and sets.
    const std::vector<std::unique_ptr<ChartElement>>& elements() const { return list; }
    int element_count() const { return static_cast<int>(list.size()) - 1; }  // element 0 aside
    const ChartElement* element(int number) const;
    const ChartRange& range() const { return shown_range; }
    // Changes each time an element, the range or a property changes, so that a view redraws
    // only what changed; `view_revision` moves each time the range shown changes, and alone
    // for a gesture.
    uint64_t revision = 0;
    uint64_t view_revision = 0;
    double track_press_x = 0, track_press_y = 0;  // thousandths of an axis unit
    int track_state = 0;

private:
    std::vector<std::unique_ptr<ChartElement>> list;
    int current = 0;
    ChartRange shown_range;
    ChartRange shown_view;
    void set_view(const ChartRange& range);
    ChartElement* current_element();
};

}  // namespace zel
