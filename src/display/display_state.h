#pragma once
// The strip chart's scale and threshold.

namespace zel {

struct DisplayState {
    double min_x = 0;
    double max_x = 1000;
    double max_y = 2.0;
    double min_y = -2.0;
    float x_scale_factor = 1.0f;
    float thresh = 1.2f;
    bool inhale = true;
    float count_frequency = 50.0f;
    double i = 0;  // loop counter of the grid drawing
};

}  // namespace zel
