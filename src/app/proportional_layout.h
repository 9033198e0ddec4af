#pragma once
// The proportional layout of a resizable window: at load, each control's place and font size
// and the window's inner size are kept; at each resize, the places are the kept ones scaled by
// how much the window has grown in each direction. Font sizes stay as they are.
#include <array>
#include <vector>

#include "app/control.h"

namespace zel {

class ProportionalLayout {
public:
    // `controls` in the window's collection order, menu entries and dialogs left out.
    void record(const std::vector<Control*>& controls, double inner_width, double inner_height);
    // The same controls in the same order. `system_height`, when given, keeps the height the
    // system gives it (a drop-down list).
    void scale(const std::vector<Control*>& controls, double inner_width, double inner_height,
               const Control* system_height = nullptr) const;

private:
    std::vector<std::array<float, 5>> kept;  // left, top, width, height, font size
    double kept_width = 0, kept_height = 0;
};

}  // namespace zel
