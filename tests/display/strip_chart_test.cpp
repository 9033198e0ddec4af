#include <gtest/gtest.h>

#include <algorithm>

#include "fakes/rig.h"

namespace zel::test {
namespace {

using Stroke = RecordingSurface::Stroke;
constexpr Rgb grid{255, 192, 128}, green{0, 255, 0}, red{255, 0, 0}, blue{0, 0, 255};

std::vector<Stroke> strokes_where(const Rig& rig, auto predicate) {
    std::vector<Stroke> out;
    for (const Stroke& s : rig.fakes.chart.strokes)
        if (predicate(s)) out.push_back(s);
    return out;
}

bool is_horizontal_grid(const Stroke& s) {
    return !s.is_box && s.style == LineStyle::dotted && s.y1 == s.y2;
}
bool is_vertical_grid(const Stroke& s) {
    return !s.is_box && s.style == LineStyle::dotted && s.x1 == s.x2;
}

TEST(StripChart, draws_eight_horizontal_grid_lines_the_last_on_the_bottom_edge) {
    Rig rig;
    rig.form.draw_chart();
    std::vector<double> ys;
    for (const Stroke& s : strokes_where(rig, is_horizontal_grid)) {
        EXPECT_EQ(s.colour, grid);
        EXPECT_EQ(s.width, 1);
        ys.push_back(s.y1);
    }
    EXPECT_EQ(ys, (std::vector<double>{-1.5, -1, -0.5, 0, 0.5, 1, 1.5, 2}));
    EXPECT_EQ(rig.fakes.chart.log.mid(0, 2),
              (QStringList{QStringLiteral("scale 0 -2 1000 2"), QStringLiteral("clear")}));
}

TEST(StripChart, issues_one_vertical_line_a_second_whatever_the_division) {
    struct Case { double max_x; float scale; int issued; int inside; };
    const Case cases[] = {
        {1000, 1, 20, 20}, {1000, 3, 20, 6}, {1000, 2, 20, 10}, {500, 1, 10, 10}, {1500, 3, 30, 10},
    };
    for (const auto& c : cases) {
        Rig rig;
        rig.form.max_x = c.max_x;
        rig.form.x_scale_factor = c.scale;
        rig.form.draw_chart();
        const auto lines = strokes_where(rig, is_vertical_grid);
        EXPECT_EQ(static_cast<int>(lines.size()), c.issued) << c.max_x << " " << c.scale;
        const auto inside = std::count_if(lines.begin(), lines.end(),
                                          [&](const Stroke& s) { return s.x1 <= c.max_x; });
        EXPECT_EQ(inside, c.inside) << c.max_x << " " << c.scale;
        EXPECT_DOUBLE_EQ(lines.front().x1, 50.0 * c.scale);
    }
}

TEST(StripChart, zero_line_solid_and_threshold_line_wide_and_green) {
    Rig rig;
    rig.form.thresh = 0.8f;
    rig.form.draw_chart();
    const auto solid = strokes_where(rig, [](const Stroke& s) { return s.style == LineStyle::solid; });
    ASSERT_EQ(solid.size(), 2u);
    EXPECT_EQ(solid[0].colour, grid);
    EXPECT_EQ(solid[0].width, 1);
    EXPECT_EQ(solid[0].y1, 0);
    EXPECT_EQ(solid[1].colour, green);
    EXPECT_EQ(solid[1].width, 4);
    EXPECT_FLOAT_EQ(static_cast<float>(solid[1].y1), -0.8f);  // volumes stand negated
}

TEST(StripChart, places_the_threshold_label_at_the_threshold_height) {
    struct Case { float thresh; double max_y; const char* caption; double top; };
    const Case cases[] = {
        {1.2f, 2.0, "1.2", 0.2 * 7485 - 142.5},
        {0.0f, 2.0, "0.0", 0.5 * 7485 - 142.5},
        {-0.55f, 1.0, "-0.6", 0.775 * 7485 - 142.5},
        // The threshold label once under-read these: a single widened to a double rounds down.
        {0.35f, 2.0, "0.4", 0.4125 * 7485 - 142.5},
        {0.45f, 2.0, "0.5", 0.3875 * 7485 - 142.5},
        {1.15f, 2.0, "1.2", 0.2125 * 7485 - 142.5},
        {1.55f, 2.0, "1.6", 0.1125 * 7485 - 142.5},
    };
    for (const auto& c : cases) {
        Rig rig;
        rig.form.thresh = c.thresh;
        rig.form.max_y = c.max_y;
        rig.form.min_y = -c.max_y;
        rig.form.draw_chart();
        EXPECT_EQ(rig.form.thresh_label.Caption, QString::fromLatin1(c.caption)) << c.thresh;
        EXPECT_NEAR(rig.form.thresh_label.Top, c.top, 0.01) << c.thresh;
    }
}

TEST(StripChart, a_flat_scale_is_a_fault) {
    Rig rig;
    rig.form.max_y = 0;
    rig.form.min_y = 0;
    EXPECT_THROW(rig.form.draw_chart(), ZelError);
}

TEST(StripChart, the_box_frames_the_armed_region_only_while_armed_or_holding) {
    struct Case { int16_t b_state; bool inhale; bool drawn; double far_y; };
    const Case cases[] = {
        {0, true, false, 0}, {1, true, false, 0}, {5, true, false, 0},
        {2, true, true, -2}, {3, false, true, 2}, {4, true, true, -2}, {4, false, true, 2},
    };
    for (const auto& c : cases) {
        Rig rig;
        rig.form.b_state = c.b_state;
        rig.form.inhale = c.inhale;
        rig.form.draw_chart();
        const auto boxes = strokes_where(rig, [](const Stroke& s) { return s.is_box; });
        ASSERT_EQ(boxes.size(), c.drawn ? 1u : 0u) << c.b_state;
        if (!c.drawn) continue;
        EXPECT_EQ(boxes[0].colour, green);
        EXPECT_EQ(boxes[0].width, 4);
        EXPECT_EQ(boxes[0].x1, 0);
        EXPECT_EQ(boxes[0].x2, 1000);
        EXPECT_FLOAT_EQ(static_cast<float>(boxes[0].y1), -1.2f);
        EXPECT_EQ(boxes[0].y2, c.far_y);
    }
}

TEST(StripChart, segments_follow_the_switch_and_the_sweep_wraps_after_max_x) {
    Rig rig;
    rig.form.max_x = 3;
    const struct { uint8_t flags; int16_t units; } frames[] = {
        {0x04, 250}, {0x06, 500}, {0x06, 250}, {0x04, 0}, {0x04, 125}, {0x04, 250},
    };
    for (const auto& f : frames) rig.fakes.serial.receive(data_frame(f.flags, 1, f.units));
    // Frames 1 to 3 draw at x 1, 2, 3; frame 4 (counts 4 > 3) wraps and draws nothing;
    // frames 5 and 6 draw from x 1 and 2 of the new sweep. A segment takes the colour of the
    // switch as the frame before left it: the switch is read after the chart is drawn.
    QStringList segments;
    for (const QString& entry : rig.fakes.chart.log)
        if (entry.startsWith(QStringLiteral("line")) && !entry.endsWith(QStringLiteral("255,192,128")) &&
            entry.count(QLatin1Char(' ')) == 5 && !entry.endsWith(QStringLiteral("0,255,0")))
            segments.append(entry);
    EXPECT_EQ(segments, (QStringList{
                            QStringLiteral("line 1 0 2 -1 255,0,0"),
                            QStringLiteral("line 2 -1 3 -2 255,0,0"),
                            QStringLiteral("line 3 -2 4 -1 0,0,255"),
                            QStringLiteral("line 1 0 2 -0.5 255,0,0"),
                            QStringLiteral("line 2 -0.5 3 -1 255,0,0"),
                        }));
    EXPECT_EQ(rig.fakes.chart.clears, 1);
    EXPECT_EQ(rig.form.counts, 2);
}

TEST(StripChart, a_redraw_mid_sweep_keeps_the_trace_position) {
    Rig rig;
    for (int k = 0; k < 10; ++k) rig.fakes.serial.receive(data_frame());
    rig.form.draw_chart();
    rig.fakes.serial.receive(data_frame());
    const Stroke last = rig.fakes.chart.strokes.back();
    EXPECT_EQ(last.x1, 11);
    EXPECT_EQ(last.width, 3);
    EXPECT_EQ(last.colour, red);
}

TEST(ThresholdRegion, the_narrowed_volume_must_pass_the_threshold_strictly) {
    struct Case { double volume; bool inhale; bool inside; };
    const Case cases[] = {
        {1.2, true, false},  // 1.2 narrowed equals the single 1.2: in neither region
        {1.2, false, false},  {1.204, true, true}, {1.196, true, false},
        {1.196, false, true}, {-3.0, false, true}, {-3.0, true, false},
    };
    for (const auto& c : cases) {
        Rig rig;
        rig.form.volume = c.volume;
        rig.form.inhale = c.inhale;
        EXPECT_EQ(rig.form.volume_in_threshold_region(), c.inside) << c.volume << c.inhale;
    }
}

}  // namespace
}  // namespace zel::test
