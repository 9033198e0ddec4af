// The review chart on screen: what the operator sees of the elements, and what the mouse does to
// the range and to the measuring cursor the logic reads.
#include "ui/review_chart_widget.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QTest>
#include <cmath>
#include <numbers>
#include <tuple>
#include <vector>

namespace zel::test {
namespace {

struct Chart {
    ReviewChart model;
    ReviewChartWidget widget{model, nullptr};
    struct Cursor {
        double x, y;
        int track_state;
    };
    std::vector<Cursor> cursor;

    Chart(int width, int height, ChartRange range) {
        model.SetRange(range.x_min, range.x_max, range.y_min, range.y_max);
        widget.cursor_moved = [this](double x, double y) {
            cursor.push_back({x, y, model.track_state});
        };
        widget.resize(width, height);
        widget.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&widget));
        QCoreApplication::processEvents();
    }
    void add(Rgb colour, int16_t type, int16_t width, const std::vector<double>& x,
             const std::vector<double>& y) {
        model.AddElement();
        model.ElementLineColor(colour);
        model.ElementLinetype(type);
        model.ElementWidth(width);
        for (size_t i = 0; i < x.size(); ++i)
            model.PlotXY(x[i], y[i], int16_t(model.element_count()));
    }
    QImage picture() {
        widget.sync();
        return widget.grab().toImage();
    }
    QPoint at(double x, double y) const {
        return {qRound(widget.xAxis->coordToPixel(x)), qRound(widget.yAxis->coordToPixel(y))};
    }
    ChartRange shown() const {
        const QCPRange x = widget.xAxis->range(), y = widget.yAxis->range();
        return {x.lower, x.upper, y.lower, y.upper};
    }
};

bool is(const QImage& image, QPoint p, Rgb c) {
    return image.valid(p) && image.pixelColor(p) == QColor(c.r, c.g, c.b);
}

// Pixels of the colour within `reach` of the point.
int count_near(const QImage& image, QPoint p, int reach_x, int reach_y, Rgb c) {
    int n = 0;
    for (int dx = -reach_x; dx <= reach_x; ++dx) {
        for (int dy = -reach_y; dy <= reach_y; ++dy) n += is(image, p + QPoint(dx, dy), c);
    }
    return n;
}

void expect_range(const ChartRange& shown, const ChartRange& expected, double tolerance,
                  const char* what) {
    EXPECT_NEAR(shown.x_min, expected.x_min, tolerance) << what;
    EXPECT_NEAR(shown.x_max, expected.x_max, tolerance) << what;
    EXPECT_NEAR(shown.y_min, expected.y_min, tolerance) << what;
    EXPECT_NEAR(shown.y_max, expected.y_max, tolerance) << what;
}

constexpr Rgb red{255, 0, 0}, blue{0, 0, 255}, black{0, 0, 0};

TEST(ReviewChartWidget, draws_each_shown_element_with_its_colour_and_line_type) {
    struct Case {
        const char* what;
        Rgb colour;
        int16_t type, width;
        bool show, into_element_0;
        double min_share, max_share;  // of the pixel columns along the line in its colour
    };
    const Case cases[] = {
        {"solid", red, 0, 1, true, false, 0.98, 1.0},
        {"solid, thick", blue, 0, 3, true, false, 0.98, 1.0},
        {"dotted", red, 2, 1, true, false, 0.2, 0.6},
        {"dotted, thick", blue, 2, 2, true, false, 0.2, 0.6},
        {"hidden", red, 0, 1, false, false, 0, 0},
        {"element 0", red, 0, 1, true, true, 0, 0},
    };
    for (const Case& c : cases) {
        Chart chart(600, 400, {0, 10, -1, 1});
        chart.picture();
        chart.add(c.colour, c.type, c.width, {0, 10}, {0.5, 0.5});
        chart.model.ElementShow(c.show);
        if (c.into_element_0) {
            chart.model.DeleteElement(1);
            for (double x : {0.0, 10.0}) chart.model.PlotXY(x, 0.5, 0);
        }
        const QImage image = chart.picture();
        int on_line = 0, columns = 0, below = 0;
        for (int x = chart.at(2, 0).x(); x <= chart.at(8, 0).x(); ++x, ++columns) {
            on_line += count_near(image, {x, chart.at(0, 0.5).y()}, 0, 1, c.colour) > 0;
            below += count_near(image, {x, chart.at(0, -0.5).y()}, 0, 1, c.colour);
        }
        EXPECT_GE(on_line, c.min_share * columns) << c.what;
        EXPECT_LE(on_line, c.max_share * columns) << c.what;
        EXPECT_EQ(below, 0) << c.what;
    }
}

TEST(ReviewChartWidget, a_run_narrower_than_a_pixel_stays_visible_in_a_whole_recording) {
    // 30 minutes at 50 samples a second, drawn whole, the runs sharing their end points.
    const double rate = 50;
    std::vector<double> t(90'000), volume(90'000);
    for (size_t i = 0; i < t.size(); ++i) {
        t[i] = i / rate;
        volume[i] = 1.0 + 0.8 * std::sin(2 * std::numbers::pi * t[i] / 4);
    }
    struct Run {
        Rgb colour;
        int16_t width;
        size_t from, to;  // samples, both included
    };
    const Run runs[] = {
        {red, 1, 0, 30'000},      {blue, 5, 30'000, 31'000},   // a 20 s breath-hold
        {red, 1, 31'000, 45'000}, {black, 2, 45'000, 45'001},  // one sample
        {red, 1, 45'001, 89'999},
    };
    Chart chart(1000, 700, {0, 1800, -0.5, 2.5});
    for (const Run& r : runs) {
        for (size_t i = r.from; i <= r.to; ++i) volume[i] = r.colour == blue ? 1.8 : volume[i];
        chart.add(r.colour, 0, r.width, {t.begin() + r.from, t.begin() + r.to + 1},
                  {volume.begin() + r.from, volume.begin() + r.to + 1});
    }
    const QImage image = chart.picture();
    struct Case {
        const char* what;
        QPoint where;
        Rgb colour;
        int min_pixels;
    };
    const Case cases[] = {
        {"one black sample among red breathing", chart.at(900.01, volume[45'000]), black, 2},
        // Width 5 across one pixel column is five pixels high.
        {"breath-hold drawn thick", chart.at(610, 1.8), blue, 4},
    };
    for (const Case& c : cases) {
        EXPECT_GE(count_near(image, c.where, 0, 4, c.colour), c.min_pixels) << c.what;
    }
}

TEST(ReviewChartWidget, a_dense_curve_looks_as_if_every_sample_were_drawn) {
    // Breathing with noise at 50 samples a second for 30 minutes: many samples per pixel column.
    std::vector<double> t(90'000), volume(90'000);
    uint32_t noise = 1;
    for (size_t i = 0; i < t.size(); ++i) {
        noise = noise * 1664525u + 1013904223u;
        t[i] = i / 50.0;
        volume[i] = 1.0 + 0.8 * std::sin(2 * std::numbers::pi * t[i] / 4) + (noise >> 24) / 2560.0;
    }
    const QCPRange shown[] = {{0, 1800}, {400.3, 527.9}, {900.01, 905.5}};
    for (const QCPRange& range : shown) {
        Chart chart(600, 400, {range.lower, range.upper, -0.5, 2.5});
        chart.add(red, 0, 1, t, volume);
        const QImage image = chart.picture();
        // Every sample, straight onto a picture of the same size.
        QImage every(image.size(), QImage::Format_RGB32);
        every.fill(Qt::white);
        {
            QPainter painter(&every);
            painter.setClipRect(chart.widget.axisRect()->rect());
            painter.setPen(QPen(Qt::red, 1, Qt::SolidLine, Qt::SquareCap));
            QPolygonF line;
            for (size_t i = 0; i < t.size(); ++i) {
                line << QPointF(chart.widget.xAxis->coordToPixel(t[i]),
                                chart.widget.yAxis->coordToPixel(volume[i]));
            }
            painter.drawPolyline(line);
        }
        // Inside the frame and clear of the ticks, which the chart draws over the curve.
        const QRect inside = chart.widget.axisRect()->rect().adjusted(6, 1, -1, -6);
        int drawn = 0, differ = 0, astray = 0;
        for (int y = inside.top(); y <= inside.bottom(); ++y) {
            for (int x = inside.left(); x <= inside.right(); ++x) {
                const bool there = is(every, {x, y}, red), shown = is(image, {x, y}, red);
                drawn += there;
                differ += there != shown;
                // Where a sample's line only grazes a pixel, the two may pick its neighbour.
                astray +=
                    there != shown && count_near(there ? image : every, {x, y}, 1, 1, red) == 0;
            }
        }
        EXPECT_GT(drawn, 1000) << range.lower;
        EXPECT_LE(differ, drawn / 100) << range.lower;
        EXPECT_EQ(astray, 0) << range.lower;
    }
}

TEST(ReviewChartWidget, shows_the_model_range_until_the_operator_zooms_and_after_a_reset) {
    Chart chart(600, 400, {0, 1800, -0.5, 2.5});
    chart.widget.sync();
    expect_range(chart.shown(), {0, 1800, -0.5, 2.5}, 0, "opened");
    chart.widget.xAxis->setRange(100, 200);
    chart.add(red, 0, 1, {0, 10}, {0, 0});
    chart.widget.sync();
    expect_range(chart.shown(), {100, 200, -0.5, 2.5}, 0, "an element added keeps the zoom");
    chart.widget.reset_zoom();
    expect_range(chart.shown(), {0, 1800, -0.5, 2.5}, 0, "reset");
    chart.model.SetRange(-5, 5, 0, 1);
    chart.widget.sync();
    expect_range(chart.shown(), {-5, 5, 0, 1}, 0, "a new range");
}

// A drag or click with one button, in axis units.
void drag(Chart& chart, Qt::MouseButton button, QPointF from, QPointF to) {
    const QPoint a = chart.at(from.x(), from.y()), b = chart.at(to.x(), to.y());
    QTest::mousePress(&chart.widget, button, {}, a);
    for (int step = 1; step <= 4; ++step) QTest::mouseMove(&chart.widget, a + (b - a) * step / 4);
    QTest::mouseRelease(&chart.widget, button, {}, b);
}

TEST(ReviewChartWidget, the_mouse_mode_decides_what_a_drag_does_to_the_range) {
    struct Case {
        const char* what;
        int32_t mode;
        Qt::MouseButton button;
        QPointF from, to;
        ChartRange expected;
    };
    const Case cases[] = {
        {"zoom into the rectangle", track_zoom, Qt::LeftButton, {2, 8}, {6, 4}, {2, 6, 4, 8}},
        {"right click zooms out",
         track_zoom,
         Qt::RightButton,
         {2.5, 5},
         {2.5, 5},
         {-2.5, 17.5, -5, 15}},
        {"pan", track_pan, Qt::LeftButton, {5, 5}, {7, 6}, {-2, 8, -1, 9}},
        {"pan along time only", track_pan_x, Qt::LeftButton, {5, 5}, {7, 6}, {-2, 8, 0, 10}},
        {"measure keeps the range", track_measure, Qt::LeftButton, {2, 8}, {6, 4}, {0, 10, 0, 10}},
    };
    for (const Case& c : cases) {
        Chart chart(600, 400, {0, 10, 0, 10});
        chart.model.TrackMode = c.mode;
        chart.widget.sync();
        drag(chart, c.button, c.from, c.to);
        // A pixel of the 600 x 400 widget is about 0.02 of either axis.
        expect_range(chart.shown(), c.expected, 0.1, c.what);
    }
}

TEST(ReviewChartWidget, reports_the_cursor_and_the_measurement_held_by_the_left_button) {
    struct Case {
        int32_t mode;
        std::vector<int> states;  // track_state at each cursor event
    };
    const Case cases[] = {
        // Press, move, release, then a move with no button.
        {track_measure, {1, 1, 1, 0, 0}},
        // The moves only; nothing is measured.
        {track_pan_x, {0, 0, 0}},
        {track_zoom, {0, 0, 0}},
    };
    for (const Case& c : cases) {
        Chart chart(600, 400, {0, 10, 0, 10});
        chart.model.TrackMode = c.mode;
        chart.widget.sync();
        QTest::mousePress(&chart.widget, Qt::LeftButton, {}, chart.at(2, 3));
        if (c.mode == track_measure) {
            EXPECT_NEAR(chart.model.track_press_x, 2000, 30);
            EXPECT_NEAR(chart.model.track_press_y, 3000, 30);
            EXPECT_EQ(chart.model.track_state, 1);
        }
        QTest::mouseMove(&chart.widget, chart.at(3, 3));
        QTest::mouseMove(&chart.widget, chart.at(4, 5));
        QTest::mouseRelease(&chart.widget, Qt::LeftButton, {}, chart.at(4, 5));
        QTest::mouseMove(&chart.widget, chart.at(3.5, 4.5));
        // Over the axis labels, outside the plot area: no cursor.
        QTest::mouseMove(&chart.widget, {2, 2});
        EXPECT_EQ(chart.model.track_state, 0) << c.mode;
        std::vector<int> states;
        for (const auto& e : chart.cursor) states.push_back(e.track_state);
        EXPECT_EQ(states, c.states) << c.mode;
        ASSERT_FALSE(chart.cursor.empty());
        if (c.mode == track_measure) {
            EXPECT_NEAR(chart.cursor.front().x, 2, 0.03);
            EXPECT_NEAR(chart.cursor[3].x, 4, 0.03);
            EXPECT_NEAR(chart.cursor[3].y, 5, 0.03);
        }
        EXPECT_NEAR(chart.cursor.back().x, 3.5, 0.03) << c.mode;
        EXPECT_NEAR(chart.cursor.back().y, 4.5, 0.03) << c.mode;
    }
}

}  // namespace
}  // namespace zel::test
