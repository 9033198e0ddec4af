#include "review/review_chart.h"

namespace zel {

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

void ReviewChart::PlotXY(double x, double y, int16_t element) {
    if (element < 0 || element > element_count()) return;
    list[element]->x.push_back(x);
    list[element]->y.push_back(y);
    ++revision;
}

void ReviewChart::SetRange(double x_min, double x_max, double y_min, double y_max) {
    shown_range = ChartRange{x_min, x_max, y_min, y_max};
    ++revision;
    ++range_revision;
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
