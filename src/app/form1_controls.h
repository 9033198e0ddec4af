#pragma once
// The controls of the main window.
#include "app/control.h"

namespace zel {

struct Form1Controls {
    Control Pic;            // the strip chart's surface
    Control thresh_label;   // the threshold's value beside the chart
    Control elapsed_label;  // session time
    Control volume_label;   // the latest volume
    Control countdown2;     // seconds left in a hold
    Control Label2;         // prompts, fault and abort texts
};

}  // namespace zel
