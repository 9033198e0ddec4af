// How a recorded curve becomes chart elements, the ranges of the axes and the measurement.
#include <gtest/gtest.h>

#include "review/review_rig.h"

namespace zel::test {
namespace {

// The look of an element: colour as 0xRRGGBB, line type, width, its number of points and the
// volume of its first point.
using Look = std::tuple<unsigned, int, int, size_t, double>;
constexpr unsigned red = 0xff0000, black = 0;

std::vector<Look> looks(const ReviewChart& chart) {
    std::vector<Look> result;
    for (int k = 1; k <= chart.element_count(); ++k) {
        const ChartElement& e = *chart.element(k);
        const unsigned colour = e.color.r << 16 | e.color.g << 8 | e.color.b;
        result.push_back({colour, e.line_type, e.width, e.x.size(), e.y.at(0)});
    }
    return result;
}

// A window open on one curve file written from these samples.
struct OneCurve : ReviewRig {
    explicit OneCurve(const std::vector<Sample>& samples, double threshold = 1.2) {
        open_on({write_curve(QStringLiteral("c.dat"), samples, threshold)});
    }
};

// The threshold line, the zero line, then the runs; each run is drawn with the volume of the
// sample before its own, from its first sample on, which shows as a gap.
TEST(PlotCurve, one_element_per_run_of_equal_look_and_holds_only_from_free_breathing) {
    struct Case {
        const char* states;
        std::vector<double> holds;
        std::vector<Look> elements;  // none: not looked at
    };
    const Case cases[] = {
        {"11111", {}, {{red, 0, 3, 4, 1.2}, {black, 0, 3, 4, 0}, {black, 0, 2, 2, 0}, {red, 0, 2, 3, 0.01}}},
        // A hold, then the switch off.
        {"11100122", {0.06},
         {{red, 0, 3, 7, 1.2}, {black, 0, 3, 7, 0}, {black, 0, 2, 2, 0}, {red, 0, 2, 2, 0.01},
          {red, 0, 5, 3, 0.02}, {red, 0, 2, 2, 0.04}, {red, 2, 1, 2, 0.05}}},
        // A lost frame is a black run.
        {"111-111", {},
         {{red, 0, 3, 5, 1.2}, {black, 0, 3, 5, 0}, {black, 0, 2, 2, 0}, {red, 0, 2, 2, 0.01},
          {black, 0, 2, 2, 0.02}, {red, 0, 2, 2, 0.03}}},
        {"1110011001", {0.06, 0.14}, {}},
        {"1122001", {}, {}},  // the switch was off before the hold
        {"111000000", {0.06}, {}},
        {"0001100", {0.10}, {}},  // a hold at the start of the file does not count
        // Neither a gap before the hold nor one inside it starts a hold.
        {"111-0001100-00", {0.16}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.states);
        OneCurve rig(samples_of(c.states));
        // Times are sums of frame periods, so they are compared to the microsecond.
        const std::vector<double>& holds = rig.window.curve_info[0].breath_hold_times;
        ASSERT_EQ(holds.size(), c.holds.size());
        for (size_t i = 0; i < holds.size(); ++i) EXPECT_NEAR(holds[i], c.holds[i], 1e-9) << i;
        if (c.elements.empty()) continue;
        EXPECT_EQ(looks(rig.window.NTGraph1), c.elements);
        EXPECT_EQ(rig.window.element_total, static_cast<int>(c.elements.size()));
    }
}

TEST(ChartRanges, cover_the_shown_curves_symmetrically_about_zero) {
    struct Case { const char* name; double peak, trough, threshold, high; };
    const Case cases[] = {
        {"small peaks: at least a litre", 0.5, 0.0, 0.4, 1.0},
        {"a peak of 2.5", 2.5, -0.2, 1.2, 2.8},
        {"a deep trough", 0.5, -1.7, 0.4, 2.0},
        {"a negative threshold", 0.2, -0.1, -1.5, 1.8},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::vector<Sample> samples = samples_of("11111");
        samples[1].volume = c.peak;
        samples[2].volume = c.trough;
        const ChartRange range = OneCurve(samples, c.threshold).window.NTGraph1.range();
        EXPECT_NEAR(range.y_min, -c.high, 1e-12);
        EXPECT_NEAR(range.y_max, c.high, 1e-12);
    }
}

// The chart's cursor event, the left button held or not.
void cursor(PatientCurves& w, bool held, double x, double y) {
    w.NTGraph1.track_state = held;
    w.NTGraph1_CursorPosition(x, y);
}

TEST(Measurement, a_drag_leaves_three_elements_until_something_takes_them_away) {
    struct Case { const char* what; void (*act)(ReviewRig&); int elements; const char* reading; };
    const Case cases[] = {
        {"a new press", [](ReviewRig& r) { cursor(r.window, true, 2.0, 0.0); }, 5, "0.5"},
        {"pan", [](ReviewRig& r) { r.window.optPan_Click(); }, 4, ""},
        {"pan along time", [](ReviewRig& r) { r.window.optPanX_Click(); }, 4, ""},
        {"reset zoom", [](ReviewRig& r) { r.window.buttonResetZoom_Click(); }, 4, ""},
        {"apply", [](ReviewRig& r) { r.window.buttonApply_Click(); }, 4, ""},
        {"unchecking", [](ReviewRig& r) { r.window.PatientList_ItemCheck(1, false); }, 4, ""},
        // The numbers of the new curve's elements would be off by the three.
        {"an import",
         [](ReviewRig& r) { r.import({r.write_curve("d.dat", samples_of("11111"))}); }, 8, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        OneCurve rig(samples_of("11111"));
        PatientCurves& w = rig.window;
        ReviewChart& chart = w.NTGraph1;
        w.optMeasure_Click();
        chart.track_press_x = 1500;  // 1.5 s
        chart.track_press_y = 250;   // 0.25 L
        cursor(w, true, 1.5, 0.25);
        cursor(w, true, 3.7254, 1.0);
        EXPECT_EQ((QStringList{w.XYInfo.Caption, w.XYInfo4.Caption, w.XYInfo2.Caption,
                               w.measured_time_label.Caption}),
                  (QStringList{"2.225", "0.75", "3.725\n0:00.04  h:m:s", "time [s]"}));
        cursor(w, false, 4.0, 1.0);
        EXPECT_TRUE(w.measure_present);
        EXPECT_EQ(w.element_total, 7);
        EXPECT_EQ(chart.element(6)->line_type, 2);
        EXPECT_EQ(chart.element(6)->x, (std::vector<double>{1.5, 4.0}));
        EXPECT_EQ(chart.element(7)->y, (std::vector<double>{1.0, 1.0}));
        c.act(rig);
        EXPECT_FALSE(w.measure_present);
        EXPECT_EQ(w.element_total, c.elements);
        EXPECT_EQ(chart.element_count(), c.elements);
        EXPECT_EQ(w.XYInfo.Caption, QString::fromLatin1(c.reading));
    }
}

TEST(TimeString, hours_minutes_and_seconds_with_a_point) {
    struct Case { int32_t seconds; const char* text; };
    const Case cases[] = {{3725, "1:02.05"}, {-59, "-0:00.59"}, {0, "0:00.00"}, {86399, "23:59.59"}};
    for (const auto& c : cases)
        EXPECT_EQ(PatientCurves::TimeString(c.seconds), QString::fromLatin1(c.text)) << c.seconds;
}

}  // namespace
}  // namespace zel::test
