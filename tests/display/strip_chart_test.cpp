#include <gtest/gtest.h>

#include <algorithm>

#include "fakes/rig.h"

namespace zel::test {
namespace {

using Stroke = RecordingSurface::Stroke;

std::vector<Stroke> strokes_where(const Rig& rig, auto predicate) {
    std::vector<Stroke> out;
    std::copy_if(rig.fakes.chart.strokes.begin(), rig.fakes.chart.strokes.end(),
                 std::back_inserter(out), predicate);
    return out;
}

// A stroke as "x1 y1 x2 y2 colour width", enough to tell every line of the chart apart.
std::string drawn(const Stroke& s) {
    return QStringLiteral("%1 %2 %3 %4 %5,%6,%7 %8")
        .arg(s.x1).arg(s.y1).arg(s.x2).arg(s.y2)
        .arg(s.colour.r).arg(s.colour.g).arg(s.colour.b).arg(s.width).toStdString();
}

std::vector<std::string> drawn_where(const Rig& rig, auto predicate) {
    std::vector<std::string> out;
    for (const Stroke& s : strokes_where(rig, predicate)) out.push_back(drawn(s));
    return out;
}

TEST(StripChart, draws_the_grid_the_zero_line_and_the_wide_green_threshold) {
    Rig rig;
    rig.form.thresh = 0.75f;
    rig.form.draw_chart();
    // Eight dotted lines, the last on the bottom edge; volumes stand negated.
    std::vector<std::string> grid;
    for (const char* y : {"-1.5", "-1", "-0.5", "0", "0.5", "1", "1.5", "2"})
        grid.push_back(std::string("0 ") + y + " 1000 " + y + " 255,192,128 1");
    const auto horizontal = [](LineStyle style) {
        return [style](const Stroke& s) { return !s.is_box && s.y1 == s.y2 && s.style == style; };
    };
    EXPECT_EQ(drawn_where(rig, horizontal(LineStyle::dotted)), grid);
    EXPECT_EQ(drawn_where(rig, horizontal(LineStyle::solid)),
              (std::vector<std::string>{"0 0 1000 0 255,192,128 1",
                                        "0 -0.75 1000 -0.75 0,255,0 4"}));
    EXPECT_EQ(rig.fakes.chart.log.mid(0, 2),
              (QStringList{QStringLiteral("scale 0 -2 1000 2"), QStringLiteral("clear")}));
    rig.form.max_y = rig.form.min_y = 0;
    EXPECT_THROW(rig.form.draw_chart(), ZelError);  // a flat scale
}

TEST(StripChart, issues_one_vertical_line_a_second_whatever_the_division) {
    struct Case { double max_x; float scale; int issued; int inside; };
    const Case cases[] = {
        {1000, 1, 20, 20}, {1000, 3, 20, 6}, {1000, 2, 20, 10}, {500, 1, 10, 10}, {1500, 3, 30, 10},
    };
    for (const auto& c : cases) {
        Rig rig;
        rig.form.max_x = c.max_x, rig.form.x_scale_factor = c.scale;
        rig.form.draw_chart();
        const auto lines = strokes_where(rig, [](const Stroke& s) {
            return !s.is_box && s.style == LineStyle::dotted && s.x1 == s.x2;
        });
        EXPECT_EQ(static_cast<int>(lines.size()), c.issued) << c.max_x << " " << c.scale;
        const auto inside = std::count_if(lines.begin(), lines.end(),
                                          [&](const Stroke& s) { return s.x1 <= c.max_x; });
        EXPECT_EQ(inside, c.inside) << c.max_x << " " << c.scale;
        EXPECT_DOUBLE_EQ(lines.front().x1, 50.0 * c.scale);
    }
}

TEST(StripChart, places_the_threshold_label_at_the_threshold_height) {
    struct Case { float thresh; double max_y; const char* caption; double top; };
    // Top: the threshold's fraction of the chart's 7485 twips, less half the label's height.
    const Case cases[] = {
        {1.2f, 2.0, "1.2", 0.2}, {0.0f, 2.0, "0.0", 0.5}, {-0.55f, 1.0, "-0.6", 0.775},
        // The threshold label once under-read these: a single widened to a double rounds down.
        {0.35f, 2.0, "0.4", 0.4125}, {0.45f, 2.0, "0.5", 0.3875}, {1.15f, 2.0, "1.2", 0.2125},
        {1.55f, 2.0, "1.6", 0.1125},
    };
    for (const auto& c : cases) {
        Rig rig;
        rig.form.thresh = c.thresh, rig.form.max_y = c.max_y, rig.form.min_y = -c.max_y;
        rig.form.draw_chart();
        EXPECT_EQ(rig.form.thresh_label.Caption, QString::fromLatin1(c.caption)) << c.thresh;
        EXPECT_NEAR(rig.form.thresh_label.Top, c.top * 7485 - 142.5, 0.01) << c.thresh;
    }
}

TEST(StripChart, the_box_frames_the_armed_region_only_while_armed_or_holding) {
    struct Case { int16_t b_state; bool inhale; const char* box; };
    const Case cases[] = {
        {0, true, nullptr}, {1, true, nullptr}, {5, true, nullptr},
        {2, true, "0 -1.2 1000 -2 0,255,0 4"}, {3, false, "0 -1.2 1000 2 0,255,0 4"},
        {4, true, "0 -1.2 1000 -2 0,255,0 4"}, {4, false, "0 -1.2 1000 2 0,255,0 4"},
    };
    for (const auto& c : cases) {
        Rig rig;
        rig.form.b_state = c.b_state, rig.form.inhale = c.inhale;
        rig.form.draw_chart();
        const auto boxes = drawn_where(rig, [](const Stroke& s) { return s.is_box; });
        EXPECT_EQ(boxes, c.box ? std::vector<std::string>{c.box} : std::vector<std::string>{})
            << c.b_state << c.inhale;
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
    QStringList segments;  // the trace's: neither grid nor threshold colours
    for (const QString& entry : rig.fakes.chart.log)
        if (entry.startsWith(u"line") && entry.count(u' ') == 5 &&
            !entry.endsWith(u"255,192,128") && !entry.endsWith(u"0,255,0"))
            segments.append(entry);
    EXPECT_EQ(segments, (QStringList{"line 1 0 2 -1 255,0,0", "line 2 -1 3 -2 255,0,0",
                                     "line 3 -2 4 -1 0,0,255", "line 1 0 2 -0.5 255,0,0",
                                     "line 2 -0.5 3 -1 255,0,0"}));
    EXPECT_EQ(rig.fakes.chart.clears, 1);
    EXPECT_EQ(rig.form.counts, 2);

    Rig redrawn;  // a redraw mid-sweep keeps the trace's place
    for (int k = 0; k < 10; ++k) redrawn.fakes.serial.receive(data_frame());
    redrawn.form.draw_chart();
    redrawn.fakes.serial.receive(data_frame());
    EXPECT_EQ(drawn(redrawn.fakes.chart.strokes.back()), "11 0 12 0 255,0,0 3");
}

TEST(ThresholdRegion, the_narrowed_volume_must_pass_the_threshold_strictly) {
    struct Case { double volume; bool inhale; bool inside; };
    const Case cases[] = {
        {1.2, true, false}, {1.2, false, false},  // 1.2 narrowed equals the single 1.2: neither
        {1.204, true, true}, {1.196, true, false}, {1.196, false, true}, {-3.0, false, true},
        {-3.0, true, false},
    };
    for (const auto& c : cases) {
        Rig rig;
        rig.form.volume = c.volume, rig.form.inhale = c.inhale;
        EXPECT_EQ(rig.form.volume_in_threshold_region(), c.inside) << c.volume << c.inhale;
    }
}

// The main window's design: every control inside the window (the top volume label stands
// centred on the chart's top edge), Record and Pause inside the patient's frame with Pause
// above, the volume labels down the chart's left, largest on top.
TEST(MainLayout, everything_in_the_window_the_buttons_in_the_patient_frame) {
    Rig rig;
    Form1& f = rig.form;
    f.layout_main_window();
    const auto within = [](const Control& c, const Control& outer) {
        return c.Left >= outer.Left && c.Top >= outer.Top && c.Width > 0 && c.Height > 0 &&
               c.Left + c.Width <= outer.Left + outer.Width &&
               c.Top + c.Height <= outer.Top + outer.Height;
    };
    Control window;
    window.Width = f.Width, window.Height = f.Height;
    for (const Control* c : {&f.Pic, &f.Frame2, &f.Label1, &f.volume_label, &f.elapsed_label,
                             &f.infolabel5, &f.thresh_label, f.ylabel(9)})
        EXPECT_TRUE(within(*c, window)) << c->Left << " " << c->Top;
    EXPECT_TRUE(within(f.cmdPause, f.Frame2) && within(f.cmdRecord, f.Frame2));
    Control frame;  // the frame's inside, where its labels stand
    frame.Width = f.Frame2.Width, frame.Height = f.Frame2.Height;
    for (const Control* c : {&f.Label2, &f.countdown2, &f.gating_label, &f.Label4})
        EXPECT_TRUE(within(*c, frame)) << c->Left << " " << c->Top;
    EXPECT_LT(f.cmdPause.Top, f.cmdRecord.Top);
    for (int k = 1; k < 9; ++k) {
        EXPECT_LT(f.ylabel(k)->Top, f.ylabel(k + 1)->Top);
        EXPECT_LE(f.ylabel(k)->Left + f.ylabel(k)->Width, f.Pic.Left + 60) << k;
    }
    EXPECT_EQ(QStringList({f.ylabel(1)->Caption, f.ylabel(9)->Caption}), QStringList({"2.00", "-2.00"}));
}

}  // namespace
}  // namespace zel::test
