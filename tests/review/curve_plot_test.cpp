// How a recorded curve becomes chart elements, the ranges of the axes and the measurement.
#include <gtest/gtest.h>

#include "review/review_rig.h"

namespace zel::test {
namespace {

// The look of an element: colour as 0xRRGGBB, line type, width and its number of points.
using Look = std::tuple<unsigned, int, int, size_t>;
constexpr unsigned red = 0xff0000, black = 0;

std::vector<Look> looks(const ReviewChart& chart) {
    std::vector<Look> result;
    for (int k = 1; k <= chart.element_count(); ++k) {
        const ChartElement& e = *chart.element(k);
        result.push_back({e.color.r << 16 | e.color.g << 8 | e.color.b, e.line_type, e.width, e.x.size()});
    }
    return result;
}

// Times are sums of frame periods, so they are compared to the microsecond.
void expect_near(const std::vector<double>& got, const std::vector<double>& want) {
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], want[i], 1e-9) << i;
}

// The samples of `states` with one frame lost before each of the samples `lost_before`.
std::vector<Sample> with_gaps(const char* states, std::initializer_list<size_t> lost_before) {
    std::vector<Sample> samples = samples_of(states);
    for (size_t from : lost_before)
        for (size_t i = from; i < samples.size(); ++i) samples[i].session_time += 0.02;
    return samples;
}

// A window open on one curve file written from these samples.
struct OneCurve : ReviewRig {
    explicit OneCurve(const std::vector<Sample>& samples, double threshold = 1.2) {
        open_on({write_curve(QStringLiteral("c.dat"), samples, threshold)});
    }
};

TEST(PlotCurve, one_element_per_run_of_equal_look) {
    struct Case { const char* name; std::vector<Sample> samples; std::vector<Look> elements; };
    const Case cases[] = {
        // Threshold and zero lines, the first sample drawn as a gap, then one run.
        {"constant", samples_of("11111"),
         {{red, 0, 3, 4}, {black, 0, 3, 4}, {black, 0, 2, 2}, {red, 0, 2, 3}}},
        {"a hold and the switch off", samples_of("11100122"),
         {{red, 0, 3, 7}, {black, 0, 3, 7}, {black, 0, 2, 2}, {red, 0, 2, 2}, {red, 0, 5, 3},
          {red, 0, 2, 2}, {red, 2, 1, 2}}},
        {"a lost frame", with_gaps("111111", {3}),
         {{red, 0, 3, 5}, {black, 0, 3, 5}, {black, 0, 2, 2}, {red, 0, 2, 2}, {black, 0, 2, 2},
          {red, 0, 2, 2}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        OneCurve rig(c.samples);
        EXPECT_EQ(looks(rig.window.NTGraph1), c.elements);
        EXPECT_EQ(rig.window.element_total, static_cast<int>(c.elements.size()));
    }
}

TEST(PlotCurve, draws_the_volume_one_sample_behind_and_shifted_by_the_alignment) {
    OneCurve rig(samples_of("1111"));
    ReviewChart& chart = rig.window.NTGraph1;
    // Time from the frame count, volume of the sample before.
    expect_near(chart.element(4)->x, {0.04, 0.06});
    expect_near(chart.element(4)->y, {0.01, 0.02});
    expect_near(chart.element(3)->y, {0.0, 0.01});
    rig.window.curve_info[0].time_shift = -1.5;
    rig.window.clear_chart();
    rig.window.plot_curve(0);
    expect_near(chart.element(4)->x, {-1.46, -1.44});
    expect_near(chart.element(1)->y, {1.2, 1.2, 1.2});
}

TEST(PlotCurve, breath_holds_count_only_from_free_breathing) {
    struct Case { const char* name; std::vector<Sample> samples; std::vector<double> starts; };
    const Case cases[] = {
        {"two holds", samples_of("1110011001"), {0.06, 0.14}},
        {"then the switch off", samples_of("11100122"), {0.06}},
        {"the switch off before the hold", samples_of("1122001"), {}},
        {"a long hold", samples_of("111000000"), {0.06}},
        {"a hold at the start of the file", samples_of("0001100"), {0.10}},
        {"a lost frame", with_gaps("111111", {3}), {}},
        // Neither a gap before the hold nor one inside it starts a hold.
        {"gaps", with_gaps("111000110000", {3, 10}), {0.16}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        expect_near(OneCurve(c.samples).window.curve_info[0].breath_hold_times, c.starts);
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
        OneCurve rig(samples, c.threshold);
        double low, high;
        rig.window.volume_range(low, high);
        EXPECT_NEAR(low, -c.high, 1e-12);
        EXPECT_NEAR(high, c.high, 1e-12);
        EXPECT_EQ(rig.window.NTGraph1.range().y_max, high);
    }
}

TEST(ChartRanges, unchecking_every_curve_keeps_the_old_odd_bounds) {
    ReviewRig rig;
    rig.open_on({rig.write_curve(QStringLiteral("a.dat"), breathing_with_holds(2)),
                 rig.write_curve(QStringLiteral("b.dat"), breathing_with_holds(1))});
    PatientCurves& w = rig.window;
    auto times = [&w] {
        int32_t start, end;
        w.time_range(start, end);
        return std::pair{start, end};
    };
    // 1500 samples: the last frame's time, 29.98 s, to the whole second.
    EXPECT_EQ(times(), std::pair(0, 30));
    w.PatientList_ItemCheck(1, false);
    w.PatientList_ItemCheck(2, false);
    EXPECT_EQ(times(), std::pair(1, -2147483647));
    double low, high;
    w.volume_range(low, high);
    EXPECT_DOUBLE_EQ(low, -2147483647.3);
    EXPECT_DOUBLE_EQ(high, 2147483647.3);
    EXPECT_FALSE(w.mnuExport.Enabled);
    EXPECT_FALSE(w.NTGraph1.element(5)->show);
    w.PatientList_ItemCheck(2, true);
    EXPECT_EQ(times(), std::pair(0, 20));
    EXPECT_TRUE(w.mnuExport.Enabled);
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
    for (const auto& c : cases) EXPECT_EQ(PatientCurves::TimeString(c.seconds), QString::fromLatin1(c.text));
}

}  // namespace
}  // namespace zel::test
