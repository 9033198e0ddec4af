#include "review/review_chart.h"

#include <algorithm>
#include <cmath>

#include "data/prefault.h"

namespace zel {

namespace {

// How far the operator may zoom out from the range the curves gave, and how far from zero any
// gesture may reach: time is read out in whole seconds of 32 bits.
constexpr double gesture_widening = 100;
constexpr double gesture_reach = 1e6;

// One axis of the bounds, from the two ends SetRange gave in either order.
void bound_axis(double a, double b, double& low, double& high) {
    const double lo = std::min(a, b), hi = std::max(a, b);
    // Halves, so that the ends of the widest finite range do not overflow.
    const double half_span = std::max(hi - lo, 1.0) * (gesture_widening / 2);
    const double centre = lo / 2 + hi / 2;
    low = std::min(lo, std::max(centre - half_span, -gesture_reach));
    high = std::max(hi, std::min(centre + half_span, gesture_reach));
}

// One axis of a gesture's range: no wider than the bounds, and moved as a whole within them.
void fit_axis(double& low, double& high, double bound_low, double bound_high) {
    if (low > high) std::swap(low, high);
    const double width = high - low;
    if (!(width < bound_high - bound_low)) {
        low = bound_low;
        high = bound_high;
    } else if (low < bound_low) {
        low = bound_low;
        high = std::min(bound_low + width, bound_high);
    } else if (high > bound_high) {
        high = bound_high;
        low = std::max(bound_high - width, bound_low);
    }
}

}  // namespace

ReviewChart::ReviewChart() { list.push_back(std::make_unique<ChartElement>()); }

void ReviewChart::ClearGraph() {
    list.resize(1);
    *list[0] = ChartElement{};
    current = 0;
    ++revision;
}

void ReviewChart::AddElement() {
    list.push_back(std::make_unique<ChartElement>());
    current = element_count();
    ++revision;
}

void ReviewChart::DeleteElement(int16_t element) {
    if (element < 1 || element > element_count()) return;
    // Pointers move, not the points: tens of thousands of deletions stay cheap.
    list.erase(list.begin() + element);
    if (current >= element) current = current > element ? current - 1 : 0;
    ++revision;
}

void ReviewChart::ReservePoints(int16_t element, size_t points) {
    if (element < 0 || element > element_count()) return;
    list[element]->x.reserve(points);
    list[element]->y.reserve(points);
    prefault_capacity(list[element]->x);
    prefault_capacity(list[element]->y);
}

void ReviewChart::SetRange(double x_min, double x_max, double y_min, double y_max) {
    shown_range = ChartRange{x_min, x_max, y_min, y_max};
    ++revision;
    set_view(shown_range);
}

void ReviewChart::set_view(const ChartRange& range) {
    // The elements stay as they are: a pan or zoom redraws without looking them over again.
    shown_view = range;
    ++view_revision;
}

ChartRange ReviewChart::gesture_bounds() const {
    ChartRange b;
    bound_axis(shown_range.x_min, shown_range.x_max, b.x_min, b.x_max);
    bound_axis(shown_range.y_min, shown_range.y_max, b.y_min, b.y_max);
    return b;
}

void ReviewChart::gesture_range(const ChartRange& wanted) {
    for (double v : {wanted.x_min, wanted.x_max, wanted.y_min, wanted.y_max})
        if (!std::isfinite(v)) return;
    const ChartRange b = gesture_bounds();
    ChartRange r = wanted;
    fit_axis(r.x_min, r.x_max, b.x_min, b.x_max);
    fit_axis(r.y_min, r.y_max, b.y_min, b.y_max);
    if (!(r == shown_view)) set_view(r);
}

void ReviewChart::zoom_out_at(double x, double y) {
    const ChartRange& v = shown_view;
    gesture_range(ChartRange{2 * v.x_min - x, 2 * v.x_max - x, 2 * v.y_min - y, 2 * v.y_max - y});
}

void ReviewChart::reset_view() { set_view(shown_range); }

void ReviewChart::keep_in_bounds(double& x, double& y) const {
    const ChartRange b = gesture_bounds();
    // A point that is no number reads as the bounds' lower corner.
    x = std::isnan(x) ? b.x_min : std::clamp(x, b.x_min, b.x_max);
    y = std::isnan(y) ? b.y_min : std::clamp(y, b.y_min, b.y_max);
}

void ReviewChart::Element(int16_t element) {
    if (element >= 0 && element <= element_count()) current = element;
}

ChartElement* ReviewChart::current_element() { return list[current].get(); }

void ReviewChart::ElementLineColor(Rgb color) {
    current_element()->color = color;
    ++revision;
}

void ReviewChart::ElementLinetype(int16_t type) {
    current_element()->line_type = type;
    ++revision;
}

void ReviewChart::ElementWidth(int16_t width) {
    current_element()->width = width;
    ++revision;
}

void ReviewChart::ElementShow(bool shown) {
    current_element()->show = shown;
    ++revision;
}

void ReviewChart::GetTrackInfo(double& press_x, double& press_y, double& state) const {
    press_x = track_press_x;
    press_y = track_press_y;
    state = track_state;
}

const ChartElement* ReviewChart::element(int number) const {
    return number >= 0 && number <= element_count() ? list[number].get() : nullptr;
}

}  // namespace zel
