// How a recorded curve becomes chart elements, the ranges of the axes and the measurement.
#include <gtest/gtest.h>

#include <QElapsedTimer>

#include "review/review_rig.h"

namespace zel::test {
namespace {

// The look of an element: colour, line type, width and its number of points.
struct Look {
    Rgb color;
    int type;
    int width;
    size_t points;
    friend bool operator==(const Look&, const Look&) = default;
};
std::ostream& operator<<(std::ostream& os, const Look& l) {
    return os << "{" << int(l.color.r) << "," << int(l.color.g) << "," << int(l.color.b) << " type "
              << l.type << " width " << l.width << " points " << l.points << "}";
}

std::vector<Look> looks(const ReviewChart& chart) {
    std::vector<Look> result;
    for (int k = 1; k <= chart.element_count(); ++k) {
        const ChartElement& e = *chart.element(k);
        result.push_back({e.color, e.line_type, e.width, e.x.size()});
    }
    return result;
}

constexpr Rgb red{255, 0, 0}, black{0, 0, 0};

// Times are sums of frame periods, so they are compared to the microsecond.
void expect_near(const std::vector<double>& got, const std::vector<double>& want, const char* what) {
    ASSERT_EQ(got.size(), want.size()) << what;
    for (size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], want[i], 1e-9) << what << " " << i;
}

TEST(PlotCurve, one_element_per_run_of_equal_look) {
    struct Case {
        const char* name;
        std::vector<Sample> samples;
        std::vector<Look> elements;
        std::vector<double> holds;
    };
    std::vector<Sample> gapped = samples_of("111111");
    for (size_t i = 3; i < gapped.size(); ++i) gapped[i].session_time += 0.02;  // one lost frame
    const Case cases[] = {
        // Threshold and zero lines, the first sample drawn as a gap, then one run.
        {"constant", samples_of("11111"),
         {{red, 0, 3, 4}, {black, 0, 3, 4}, {black, 0, 2, 2}, {red, 0, 2, 3}}, {}},
        {"a hold and the switch off", samples_of("11100122"),
         {{red, 0, 3, 7}, {black, 0, 3, 7}, {black, 0, 2, 2}, {red, 0, 2, 2}, {red, 0, 5, 3},
          {red, 0, 2, 2}, {red, 2, 1, 2}},
         {0.06}},
        {"a lost frame", gapped,
         {{red, 0, 3, 5}, {black, 0, 3, 5}, {black, 0, 2, 2}, {red, 0, 2, 2}, {black, 0, 2, 2},
          {red, 0, 2, 2}},
         {}},
    };
    for (const auto& c : cases) {
        ReviewRig rig;
        rig.open_on({rig.write_curve(QStringLiteral("c.dat"), c.samples)});
        EXPECT_EQ(looks(rig.window.NTGraph1), c.elements) << c.name;
        expect_near(rig.window.curve_info[0].breath_hold_times, c.holds, c.name);
        EXPECT_EQ(rig.window.element_total, static_cast<int>(c.elements.size())) << c.name;
    }
}

TEST(PlotCurve, draws_the_volume_one_sample_behind_and_shifted_by_the_alignment) {
    ReviewRig rig;
    rig.open_on({rig.write_curve(QStringLiteral("c.dat"), samples_of("1111"))});
    const ChartElement& run = *rig.window.NTGraph1.element(4);
    // Time from the frame count, volume of the sample before.
    expect_near(run.x, {0.04, 0.06}, "time");
    expect_near(run.y, {0.01, 0.02}, "volume");
    expect_near(rig.window.NTGraph1.element(3)->y, {0.0, 0.01}, "first volume");
    rig.window.curve_info[0].time_shift = -1.5;
    rig.window.clear_chart();
    rig.window.plot_curve(0);
    expect_near(rig.window.NTGraph1.element(4)->x, {-1.46, -1.44}, "shifted");
    expect_near(rig.window.NTGraph1.element(1)->y, {1.2, 1.2, 1.2}, "threshold");
}

TEST(PlotCurve, breath_holds_count_only_from_free_breathing) {
    struct Case { const char* states; size_t holds; };
    const Case cases[] = {
        {"1110011001", 2},
        {"1122001", 0},    // the switch was off before the hold
        {"111000000", 1},
        {"0001100", 1},    // a hold at the start of the file does not count
    };
    for (const auto& c : cases) {
        ReviewRig rig;
        rig.open_on({rig.write_curve(QStringLiteral("c.dat"), samples_of(c.states))});
        EXPECT_EQ(rig.window.curve_info[0].breath_hold_times.size(), c.holds) << c.states;
    }
    // A gap before the hold, and a gap inside it: neither starts a hold.
    std::vector<Sample> samples = samples_of("111000110000");
    for (size_t i = 3; i < samples.size(); ++i) samples[i].session_time += 0.02;
    for (size_t i = 10; i < samples.size(); ++i) samples[i].session_time += 0.02;
    ReviewRig rig;
    rig.open_on({rig.write_curve(QStringLiteral("c.dat"), samples)});
    expect_near(rig.window.curve_info[0].breath_hold_times, {0.16}, "gaps");
}

TEST(ChartRanges, cover_the_shown_curves_symmetrically_about_zero) {
    struct Case {
        const char* name;
        double peak, trough, threshold;
        double low, high;
    };
    const Case cases[] = {
        {"small peaks: at least a litre", 0.5, 0.0, 0.4, -1.0, 1.0},
        {"a peak of 2.5", 2.5, -0.2, 1.2, -2.8, 2.8},
        {"a deep trough", 0.5, -1.7, 0.4, -2.0, 2.0},
        {"a negative threshold", 0.2, -0.1, -1.5, -1.8, 1.8},
    };
    for (const auto& c : cases) {
        ReviewRig rig;
        std::vector<Sample> samples = samples_of("11111");
        samples[1].volume = c.peak;
        samples[2].volume = c.trough;
        rig.open_on({rig.write_curve(QStringLiteral("c.dat"), samples, c.threshold)});
        double low, high;
        rig.window.volume_range(low, high);
        EXPECT_NEAR(low, c.low, 1e-12) << c.name;
        EXPECT_NEAR(high, c.high, 1e-12) << c.name;
        EXPECT_EQ(rig.window.NTGraph1.range().y_max, high) << c.name;
    }
}

TEST(ChartRanges, unchecking_every_curve_keeps_the_old_odd_bounds) {
    ReviewRig rig;
    rig.open_on({rig.write_curve(QStringLiteral("a.dat"), breathing_with_holds(2)),
                 rig.write_curve(QStringLiteral("b.dat"), breathing_with_holds(1))});
    int32_t start, end;
    rig.window.time_range(start, end);
    EXPECT_EQ(start, 0);
    EXPECT_EQ(end, 30);  // 1500 samples: the last frame's time, 29.98 s, to the whole second
    rig.window.PatientList_ItemCheck(1, false);
    rig.window.PatientList_ItemCheck(2, false);
    rig.window.time_range(start, end);
    EXPECT_EQ(start, 1);
    EXPECT_EQ(end, -2147483647);
    double low, high;
    rig.window.volume_range(low, high);
    EXPECT_DOUBLE_EQ(low, -2147483647.3);
    EXPECT_DOUBLE_EQ(high, 2147483647.3);
    EXPECT_FALSE(rig.window.mnuExport.Enabled);
    EXPECT_FALSE(rig.window.NTGraph1.element(5)->show);
    rig.window.PatientList_ItemCheck(2, true);
    rig.window.time_range(start, end);
    EXPECT_EQ(end, 20);
    EXPECT_TRUE(rig.window.mnuExport.Enabled);
}

TEST(Measurement, press_drag_release_leaves_three_elements_until_cleared) {
    ReviewRig rig;
    rig.open_on({rig.write_curve(QStringLiteral("c.dat"), samples_of("11111"))});
    PatientCurves& w = rig.window;
    ReviewChart& chart = w.NTGraph1;
    w.optMeasure_Click();
    chart.track_press_x = 1500;  // 1.5 s
    chart.track_press_y = 250;   // 0.25 L
    chart.track_state = 1;
    w.NTGraph1_CursorPosition(1.5, 0.25);
    w.NTGraph1_CursorPosition(3.7254, 1.0);
    EXPECT_EQ(w.XYInfo.Caption, QStringLiteral("2.225"));
    EXPECT_EQ(w.XYInfo4.Caption, QStringLiteral("0.75"));
    EXPECT_EQ(w.XYInfo2.Caption, QStringLiteral("3.725\n0:00.04  h:m:s"));
    EXPECT_EQ(w.measured_time_label.Caption, QStringLiteral("time [s]"));
    chart.track_state = 0;
    w.NTGraph1_CursorPosition(4.0, 1.0);
    EXPECT_TRUE(w.measure_present);
    EXPECT_EQ(w.element_total, 7);
    EXPECT_EQ(chart.element(6)->line_type, 2);
    EXPECT_EQ(chart.element(6)->x, (std::vector<double>{1.5, 4.0}));
    EXPECT_EQ(chart.element(7)->y, (std::vector<double>{1.0, 1.0}));
    // A new press takes the old one away first.
    chart.track_state = 1;
    w.NTGraph1_CursorPosition(2.0, 0.0);
    EXPECT_EQ(w.element_total, 5);
    EXPECT_EQ(chart.element_count(), 5);
    chart.track_state = 0;
    w.NTGraph1_CursorPosition(2.5, 0.0);
    w.optPan_Click();
    EXPECT_FALSE(w.measure_present);
    EXPECT_EQ(chart.element_count(), 4);
    EXPECT_EQ(w.XYInfo.Caption, QString());
    EXPECT_EQ(chart.TrackMode, track_pan);
}

TEST(TimeString, hours_minutes_and_seconds_with_a_point) {
    struct Case { int32_t seconds; const char* text; };
    const Case cases[] = {{3725, "1:02.05"}, {-59, "-0:00.59"}, {0, "0:00.00"}, {86399, "23:59.59"}};
    for (const auto& c : cases) EXPECT_EQ(PatientCurves::TimeString(c.seconds), QString::fromLatin1(c.text));
}

// A curve whose look changes at every sample runs out of element numbers: it fails with the one
// message, quickly, and the window stays usable.
TEST(PlotCurve, a_curve_that_changes_at_every_sample_fails_within_two_seconds) {
    ReviewRig rig;
    std::string states;
    for (int i = 0; i < 40000; ++i) states += i % 2 ? '0' : '1';
    const QString good = rig.write_curve(QStringLiteral("good.dat"), samples_of("11111"));
    const QString bad = rig.write_curve(QStringLiteral("bad.dat"), samples_of(states.c_str()));
    QElapsedTimer clock;
    clock.start();
    rig.open_on({good, bad});
    EXPECT_LT(clock.elapsed(), 2000);
    ASSERT_EQ(rig.boxes.shown.size(), 1);
    EXPECT_TRUE(rig.boxes.shown[0].endsWith(QStringLiteral("bad.dat")));
    EXPECT_EQ(rig.window.curve_count, 1);
    EXPECT_EQ(rig.window.PatientList.items.size(), 1u);
}

}  // namespace
}  // namespace zel::test
