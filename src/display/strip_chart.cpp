// The live strip chart: a sweep of the volume across a retained surface.
#include "app/form1.h"
#include "app/helpers.h"

namespace zel {

namespace {
constexpr Rgb grid_colour = rgb(255, 192, 128);
// Composed with a green of 256, which the composition limits to 255.
constexpr Rgb threshold_green = rgb(0, 256, 0);
constexpr Rgb box_green = rgb(0, 255, 0);
constexpr Rgb trace_red = rgb(255, 0, 0);
constexpr Rgb trace_blue = rgb(0, 0, 255);
}  // namespace

void Form1::draw_chart() {
    ChartSurface& pic = platform.chart;
    pic.set_scale(min_x, min_y, max_x, max_y);
    pic.clear();

    const int divisions = 8;
    pic.set_line_style(LineStyle::dotted);
    pic.set_line_width(1);
    pic.set_fore_color(grid_colour);
    for (i = 1; i <= divisions; i += 1) {
        const double y = min_y + i * (max_y - min_y) / divisions;
        pic.line(min_x, y, max_x, y);
    }

    // The loop runs once per second across the chart whatever the seconds per division;
    // lines beyond the right edge are clipped by the surface.
    const double n = max_x / count_frequency;
    for (i = 1; i <= n; i += 1) {
        const double x = x_scale_factor * i * max_x / n;
        pic.line(x, min_y, x, max_y);
    }

    pic.set_line_style(LineStyle::solid);
    pic.line(min_x, 0, max_x, 0);
    pic.set_line_width(4);
    pic.line(min_x, -thresh, max_x, -thresh, threshold_green);

    const double span = max_y - min_y;
    if (span == 0)
        throw ZelError(err_division_by_zero, QStringLiteral("draw_chart"),
                       QStringLiteral("Division by zero"));
    thresh_label.Top = ((max_y - thresh) / span) * Pic.Height + Pic.Top - thresh_label.Height / 2;
    thresh_label.Caption = format_single(thresh, "###0.0", platform.locale.decimal_separator());

    if (b_state == 2 || b_state == 3 || b_state == 4) draw_threshold_box();
}

void Form1::plot_sample() {
    if (counts <= max_x) {
        platform.chart.set_line_width(3);
        platform.chart.line(counts, -v0, counts + 1, -v1, patient_switch ? trace_blue : trace_red);
    } else {
        // The sample that wraps is not drawn; the next one starts the sweep at x = 1.
        counts = 0;
        draw_chart();
    }
}

void Form1::draw_threshold_box() {
    const double far_edge = inhale ? -max_y : -min_y;
    platform.chart.box(0, -thresh, max_x, far_edge, box_green);
}

bool Form1::volume_in_threshold_region() const {
    const float narrowed = static_cast<float>(volume);
    return inhale ? narrowed > thresh : narrowed < thresh;
}

}  // namespace zel
