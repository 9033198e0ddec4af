// The views on screen, offscreen: they forward events to the models and show what the models
// hold; the rules are the models'. The review chart draws the elements and turns the mouse into
// zoom, pan and the measuring cursor the logic reads.
#include <gtest/gtest.h>

#include <QTest>
#include <QtWidgets>
#include <cmath>
#include <numbers>

#include "app/zel_error.h"
#include "fakes/rig.h"
#include "language/messages.h"
#include "platform/qt_chart_surface.h"
#include "ui/breath_hold_statistics_view.h"
#include "ui/control_widgets.h"
#include "ui/form1_view.h"
#include "ui/images.h"
#include "ui/key_guard_filter.h"
#include "ui/patient_curves_view.h"
#include "ui/review_chart_widget.h"

namespace zel::test {
namespace {

// Counts the key events that get past the console's guard to the widgets it watches.
struct KeyCount final : QObject {
    int events = 0;
    bool eventFilter(QObject*, QEvent* e) override {
        events += e->type() == QEvent::KeyPress || e->type() == QEvent::KeyRelease;
        return false;
    }
};

TEST(KeyGuard, takes_the_spacebar_to_the_console_and_swallows_the_task_switch_keys) {
    Rig rig;
    rig.form.b_state = 1;
    KeyGuardFilter guard(rig.form);
    qApp->installEventFilter(&guard);
    // A dialog of the program; its button takes no focus, so that a plain Tab stays in the field.
    QDialog dialog;
    auto* button = new QPushButton(&dialog);
    auto* field = new QLineEdit(&dialog);
    button->setFocusPolicy(Qt::NoFocus);
    KeyCount reaching;
    button->installEventFilter(&reaching);
    field->installEventFilter(&reaching);
    dialog.show();
    field->setFocus();
    struct Case { bool on_button; Qt::Key key; Qt::KeyboardModifiers mods; int reaching; };
    const Case cases[] = {
        // No patient: the console refuses with its message, and the button is not pressed.
        {true, Qt::Key_Space, Qt::NoModifier, 0},
        // Typing into a text field is typing: the space stays there.
        {false, Qt::Key_Space, Qt::NoModifier, 2},
        {false, Qt::Key_Tab, Qt::AltModifier, 0}, {false, Qt::Key_Escape, Qt::AltModifier, 0},
        {false, Qt::Key_Escape, Qt::ControlModifier, 0}, {false, Qt::Key_A, Qt::NoModifier, 2},
        {false, Qt::Key_Tab, Qt::NoModifier, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.on_button << " " << c.key << " " << int(c.mods));
        reaching.events = 0;
        field->clear();
        rig.form.Label2.Caption.clear();
        const bool space = c.key == Qt::Key_Space;
        for (QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, c.key, c.mods, space ? QStringLiteral(" ") : QString());
            QApplication::sendEvent(c.on_button ? static_cast<QWidget*>(button) : field, &event);
        }
        EXPECT_EQ(reaching.events, c.reaching);
        EXPECT_EQ(rig.form.Label2.Caption, space && c.on_button ? message_text(131) : QString());
        EXPECT_EQ(field->text(), space && !c.on_button ? QStringLiteral(" ") : QString());
    }
    qApp->removeEventFilter(&guard);
}

TEST(Form1View, shows_the_captions_and_closing_the_frame_is_exit_when_exit_may_run) {
    init_images();
    Rig rig;
    QtChartSurface surface(870, 499);
    rig.form.Label2.Caption = QStringLiteral("Press spacebar to activate.");
    Form1View view(rig.form, surface);
    view.sync();
    QStringList texts;
    for (const QLabel* label : view.findChildren<QLabel*>()) texts.append(label->text());
    EXPECT_TRUE(texts.contains(QStringLiteral("Press spacebar to activate.")));
    rig.form.About.Caption = QStringLiteral("About the console");  // another language
    view.sync();
    QStringList entries;
    for (const QAction* a : view.findChildren<QAction*>()) entries.append(a->text());
    EXPECT_TRUE(entries.contains(rig.form.About.Caption));
    // The gating system's state: the picture the console shows is on the screen, alone.
    Form1& f = rig.form;
    const std::pair<Control*, const char*> pictures[] = {{&f.Image_Gating_Ready, "gating_ready"},
                                                         {&f.Image_Gating_Closed, "gating_closed"},
                                                         {&f.Image_Gating_Fault, "gating_fault"}};
    for (const auto& [shown, image] : pictures) {
        for (const auto& [c, _] : pictures) c->Visible = c == shown;
        view.sync();
        int found = 0;  // by the pixels: each label keeps its own copy
        for (const QLabel* label : view.findChildren<QLabel*>())
            found += label->isVisibleTo(&view) && !label->pixmap().isNull() &&
                     label->pixmap().toImage() == product_image(image).toImage();
        EXPECT_EQ(found, 1) << image;
    }
    // During a hold the Exit entry is off, and so is the frame's close box.
    rig.form.patient_defined = true;
    rig.form.disable_menus();
    view.show();
    view.close();
    EXPECT_TRUE(rig.ended.isEmpty() && view.isVisible());
    EXPECT_TRUE(rig.fakes.windows.log.filter(QStringLiteral("ask")).isEmpty());
    rig.form.patient_defined = false;
    rig.form.enable_menus();
    view.close();
    EXPECT_EQ(rig.ended, QStringList{QStringLiteral("0")});
}

// Each entry of the main window's menus reaches its own handler, seen by what only that
// handler opens or does.
TEST(Form1View, each_menu_entry_runs_its_own_handler) {
    init_images();
    struct Case { Control Form1::*entry; const char* seen; };
    const Case cases[] = {
        {&Form1::create_new_patient, "show Form5"}, {&Form1::load_existing_patient, "file chooser"},
        {&Form1::save_settings_as_default, "ask"},  {&Form1::zel_exit, "ended"},
        {&Form1::Control_Panel, "show Form11"},     {&Form1::Patient_Settings, "show Form12"},
        {&Form1::mnuSessionHistory, "show DialogSessionHistory"},
        {&Form1::mnuVisualizePatientCurves, "show modeless PatientCurves"},
        {&Form1::About, "show Form10"}, {&Form1::Gating_Diagnostics, "show Form_Gating"},
    };
    for (const Case& c : cases) {
        Rig rig;
        rig.form.b_state = 1;
        for (const Case& each : cases) (rig.form.*each.entry).Caption = QString(each.seen);
        rig.form.enable_menus();
        (rig.form.*c.entry).Enabled = true;
        QtChartSurface surface(870, 499);
        Form1View view(rig.form, surface);
        view.sync();
        QAction* action = nullptr;
        for (QAction* a : view.findChildren<QAction*>())
            if (a->text() == (rig.form.*c.entry).Caption) action = a;
        ASSERT_NE(action, nullptr) << c.seen;
        action->trigger();
        QStringList seen = rig.fakes.windows.log;
        if (!rig.fakes.dialogs.opened_in.isEmpty()) seen.append(QStringLiteral("file chooser"));
        if (!rig.ended.isEmpty()) seen.append(QStringLiteral("ended"));
        // What it does, and no window but its own.
        EXPECT_FALSE(seen.filter(QString::fromLatin1(c.seen)).isEmpty())
            << c.seen << ": " << seen.join(QStringLiteral(", ")).toStdString();
        EXPECT_EQ(seen.filter(QStringLiteral("show ")).size(), QString(c.seen).startsWith("show"))
            << c.seen << ": " << seen.join(QStringLiteral(", ")).toStdString();
    }
}

struct Chart {
    ReviewChart model;
    ReviewChartWidget widget{model, nullptr};
    std::vector<QPointF> cursor;  // each report
    std::vector<int> states;      // the model's track_state at each report

    Chart(int width, int height, ChartRange range) {
        model.SetRange(range.x_min, range.x_max, range.y_min, range.y_max);
        widget.cursor_moved = [this](double x, double y) {
            cursor.push_back({x, y});
            states.push_back(model.track_state);
        };
        widget.resize(width, height);
        widget.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&widget));
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
    void expect_shown(const ChartRange& e, double tolerance) const {
        const QCPRange x = widget.xAxis->range(), y = widget.yAxis->range();
        const double got[] = {x.lower, x.upper, y.lower, y.upper};
        const double want[] = {e.x_min, e.x_max, e.y_min, e.y_max};
        for (int i = 0; i < 4; ++i) EXPECT_NEAR(got[i], want[i], tolerance) << i;
    }
};

bool is(const QImage& image, QPoint p, Rgb c) {
    return image.valid(p) && image.pixelColor(p) == QColor(c.r, c.g, c.b);
}

// Pixels of the colour within `reach` of the point.
int count_near(const QImage& image, QPoint p, int reach_x, int reach_y, Rgb c) {
    int n = 0;
    for (int dx = -reach_x; dx <= reach_x; ++dx)
        for (int dy = -reach_y; dy <= reach_y; ++dy) n += is(image, p + QPoint(dx, dy), c);
    return n;
}

constexpr Rgb red{255, 0, 0}, black{0, 0, 0};

// The main window's chart: a line lands where the scale puts it, the changed area covers it,
// a dotted line leaves gaps and a wide one has round ends, so that a trace's segments join.
TEST(QtChartSurface, draws_each_line_in_its_style_where_the_scale_puts_it) {
    struct Case { LineStyle style; int width; int min_inked, max_inked; bool round_end; };
    const Case cases[] = {{LineStyle::solid, 1, 50, 51, false},
                          {LineStyle::dotted, 1, 20, 31, false},
                          {LineStyle::solid, 5, 50, 51, true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.width);
        QtChartSurface surface(200, 100);
        QRect changed;
        surface.on_changed = [&](const QRect& r) { changed = r; };
        surface.set_scale(0, 10, 20, 0);  // volume upwards
        surface.set_line_style(c.style);
        surface.set_line_width(c.width);
        surface.set_fore_color(red);
        surface.line(5, 5, 10, 5);  // pixels 50 to 100 of row 50
        int inked = 0;
        for (int x = 50; x <= 100; ++x) inked += is(surface.image(), {x, 50}, red);
        EXPECT_TRUE(inked >= c.min_inked && inked <= c.max_inked) << inked;
        // Round, not square: the end reaches on along the line but not into the corner.
        EXPECT_EQ(is(surface.image(), {101, 50}, red), c.round_end);
        EXPECT_FALSE(is(surface.image(), {102, 52}, red));
        EXPECT_FALSE(is(surface.image(), {50, 40}, red) || is(surface.image(), {40, 50}, red));
        EXPECT_TRUE(changed.contains(QRect(48, 48, 55, 5)));
    }
}

// Breathing with noise at 50 samples a second for 30 minutes, many samples per pixel column,
// looks as if every sample were drawn; a lost frame among it, narrower than a pixel, still shows,
// and a hidden curve does not.
TEST(ReviewChartWidget, a_dense_curve_looks_as_if_every_sample_were_drawn) {
    std::vector<double> t(90'000), volume(90'000);
    uint32_t noise = 1;
    for (size_t i = 0; i < t.size(); ++i) {
        noise = noise * 1664525u + 1013904223u;
        t[i] = i / 50.0;
        volume[i] = 1.0 + 0.8 * std::sin(2 * std::numbers::pi * t[i] / 4) + (noise >> 24) / 2560.0;
    }
    for (const QCPRange& range : {QCPRange{0, 1800}, {400.3, 527.9}, {900.01, 905.5}}) {
        SCOPED_TRACE(range.lower);
        Chart chart(600, 400, {range.lower, range.upper, -0.5, 2.5});
        // The lost frame first: the curve drawn after it would paint it over.
        chart.add(black, 0, 2, {t[45'000], t[45'001]}, {volume[45'000], volume[45'001]});
        chart.add(red, 0, 1, t, volume);
        const QImage image = chart.picture();
        // Every sample, straight onto a picture of the same size.
        QImage every(image.size(), QImage::Format_RGB32);
        every.fill(Qt::white);
        QPolygonF line;
        for (size_t i = 0; i < t.size(); ++i)
            line << QPointF(chart.widget.xAxis->coordToPixel(t[i]),
                            chart.widget.yAxis->coordToPixel(volume[i]));
        QPainter painter(&every);
        painter.setClipRect(chart.widget.axisRect()->rect());
        painter.setPen(QPen(Qt::red, 1, Qt::SolidLine, Qt::SquareCap));
        painter.drawPolyline(line);
        painter.end();
        // Inside the frame and clear of the ticks, which the chart draws over the curve.
        const QRect inside = chart.widget.axisRect()->rect().adjusted(6, 1, -1, -6);
        int drawn = 0, differ = 0, astray = 0;
        for (int y = inside.top(); y <= inside.bottom(); ++y) {
            for (int x = inside.left(); x <= inside.right(); ++x) {
                const bool there = is(every, {x, y}, red), shown = is(image, {x, y}, red);
                drawn += there;
                differ += there != shown && !is(image, {x, y}, black);
                // Where a sample's line only grazes a pixel, the two may pick its neighbour.
                astray +=
                    there != shown && count_near(there ? image : every, {x, y}, 1, 1, red) == 0;
            }
        }
        EXPECT_TRUE(drawn > 1000 && differ <= drawn / 100 && astray == 0)
            << drawn << " drawn, " << differ << " differ, " << astray << " astray";
        if (range.lower == 0) {  // the whole recording
            EXPECT_GE(count_near(image, chart.at(900.01, volume[45'000]), 0, 4, black), 2);
        }
        chart.model.Element(2);
        chart.model.ElementShow(false);
        const QImage hidden = chart.picture();
        EXPECT_EQ(count_near(hidden, inside.center(), inside.width(), inside.height(), red), 0);
    }
}

// A curve replaced by another, as many elements as before: the new one is drawn as it is (a way
// back in time a line back, not a band between the two ways).
TEST(ReviewChartWidget, a_curve_that_replaced_another_is_drawn_as_it_is) {
    Chart chart(600, 400, {0, 10, 0, 3});
    chart.add(red, 0, 1, {0, 10}, {1, 1});
    chart.picture();
    chart.model.DeleteElement(1);
    chart.add(red, 0, 1, {0, 10, 10, 0}, {1, 1, 2, 2});
    const QImage image = chart.picture();
    EXPECT_EQ(count_near(image, chart.at(5, 1.5), 0, 10, red), 0);
    EXPECT_GT(count_near(image, chart.at(5, 2), 0, 1, red), 0);
}

TEST(ReviewChartWidget, the_mouse_mode_decides_what_a_drag_does_and_the_cursor_reports) {
    struct Case { int mode; Qt::MouseButton button; QPointF from, to; ChartRange expected; };
    const Case cases[] = {
        {track_zoom, Qt::LeftButton, {2, 8}, {6, 4}, {2, 6, 4, 8}},  // into the rectangle
        {track_zoom, Qt::RightButton, {2.5, 5}, {2.5, 5}, {-2.5, 17.5, -5, 15}},  // out
        {track_pan, Qt::LeftButton, {5, 5}, {7, 6}, {-2, 8, -1, 9}},
        {track_pan_x, Qt::LeftButton, {5, 5}, {7, 6}, {-2, 8, 0, 10}},  // along time only
        {track_measure, Qt::LeftButton, {2, 8}, {6, 4}, {0, 10, 0, 10}},  // keeps the range
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "mode " << c.mode << ", button " << c.button);
        Chart chart(600, 400, {0, 10, 0, 10});
        chart.model.TrackMode = c.mode;
        chart.widget.sync();
        const QPoint a = chart.at(c.from.x(), c.from.y()), b = chart.at(c.to.x(), c.to.y());
        QTest::mousePress(&chart.widget, c.button, {}, a);
        for (int step = 1; step <= 4; ++step)
            QTest::mouseMove(&chart.widget, a + (b - a) * step / 4);
        QTest::mouseRelease(&chart.widget, c.button, {}, b);
        // A pixel of the 600 x 400 widget is about 0.02 of either axis.
        chart.expect_shown(c.expected, 0.1);
        // A move with no button, on the new layout, then one over the axis labels, outside the
        // plot area: no report.
        chart.widget.replot();
        QTest::mouseMove(&chart.widget, chart.at(3.5, 4.5));
        QTest::mouseMove(&chart.widget, {2, 2});
        // The left button held in measure mode is the measurement: press, moves, release.
        const bool measure = c.mode == track_measure;
        EXPECT_EQ(chart.states,
                  (measure ? std::vector{1, 1, 1, 1, 1, 0, 0} : std::vector{0, 0, 0, 0, 0}));
        auto near = [](QPointF p, QPointF q) { return (p - q).manhattanLength() < 0.05; };
        EXPECT_TRUE(!chart.cursor.empty() && near(chart.cursor.back(), {3.5, 4.5}));
        if (measure) {
            const QPointF pressed(chart.model.track_press_x, chart.model.track_press_y);
            EXPECT_TRUE(near(pressed / 1000, c.from));
            EXPECT_TRUE(near(chart.cursor[5], c.to));
        }
        // An element added keeps the operator's range; a reset returns to the model's.
        chart.add(red, 0, 1, {0, 10}, {0, 0});
        chart.widget.sync();
        chart.expect_shown(c.expected, 0.1);
        chart.widget.reset_zoom();
        chart.expect_shown({0, 10, 0, 10}, 0);
    }
}

// The review on screen: 60 right clicks once zoomed out so far that the cursor's time no longer
// fitted its 32 bits, and moving the mouse over the chart ended the program.
TEST(PatientCurvesView, zooming_out_and_panning_without_end_leave_the_cursor_reading) {
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("Doe_1.dat")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(
        "CURVE_DATA_FILE_STAMP\r\nHeaderStart\r\nThreshold:1.2\r\nCount Frequency: 50\r\n"
        "HeaderEnd\r\n");
    for (int i = 1; i <= 1500; ++i)
        file.write(QByteArray::number(0.02 * i) + ';' + QByteArray::number(std::sin(i / 50.0)) +
                   ";1;1\r\n");
    file.close();
    FakeLocale locale;
    QStringList reports;
    PatientCurvesView view(folder.path(), locale, [&](const char* source, const auto& handler) {
        if (const QString report = run_time_error(source, handler); !report.isNull())
            reports.append(report);
    });
    view.load({file.fileName()});
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    PatientCurves& m = view.model();
    for (const QGroupBox* box : view.findChildren<QGroupBox*>())
        EXPECT_GT(box->width() * box->height(), 10000) << qPrintable(box->title());
    EXPECT_EQ(view.findChild<QTreeWidget*>()->headerItem()->text(0), m.PatientList.column_text);
    // The mode the model holds is the one option shown checked.
    for (auto [option, click] : {std::pair(&m.optPan, &PatientCurves::optPan_Click),
                                 {&m.optMeasure, &PatientCurves::optMeasure_Click},
                                 {&m.optZoom, &PatientCurves::optZoom_Click}}) {
        (m.*click)();
        view.sync();
        int checked = 0;
        for (QRadioButton* b : view.findChildren<QRadioButton*>()) {
            EXPECT_EQ(b->isChecked(), b->text() == option->Caption) << qPrintable(b->text());
            checked += b->isChecked();
        }
        EXPECT_EQ(checked, 1);
    }
    ReviewChartWidget& chart = view.chart();
    const int narrow = chart.width();  // a wider window, a wider chart
    view.resize(view.width() + 200, view.height());
    EXPECT_TRUE(QTest::qWaitFor([&] { return chart.width() > narrow + 100; }, 2000));
    const QRect plot = chart.axisRect()->rect();
    const QPoint diagonal = plot.bottomRight() - plot.topLeft();
    auto sweep_within_bounds = [&] {
        for (int k = 0; k <= 40; ++k) QTest::mouseMove(&chart, plot.topLeft() + diagonal * k / 40);
        const ChartRange b = view.model().NTGraph1.gesture_bounds();
        const QCPRange x = chart.xAxis->range(), y = chart.yAxis->range();
        return x.lower >= b.x_min && x.upper <= b.x_max && y.lower >= b.y_min && y.upper <= b.y_max;
    };
    for (int click = 0; click < 60; ++click)
        QTest::mouseClick(&chart, Qt::RightButton, {},
                          plot.center() + QPoint(click % 7, click % 5));
    EXPECT_TRUE(sweep_within_bounds());
    // Pan X-Y, then from the opening range drags of half the plot's diagonal many times each way.
    view.model().optPan_Click();
    for (const QPoint& step : {diagonal / 2, -diagonal / 2}) {
        view.model().buttonResetZoom_Click();
        view.sync();
        for (int drag = 0; drag < 150; ++drag) {
            const QPoint from = plot.center() - step / 2;
            QTest::mousePress(&chart, Qt::LeftButton, {}, from);
            for (int k = 1; k <= 4; ++k) QTest::mouseMove(&chart, from + step * k / 4);
            QTest::mouseRelease(&chart, Qt::LeftButton, {}, from + step);
        }
        EXPECT_TRUE(sweep_within_bounds()) << step.x();
    }
    // File, Breath-hold Statistics: a window of its own on the curve, closed with the review.
    QAction* statistics = nullptr;
    for (QAction* a : view.menuBar()->actions().front()->menu()->actions())
        if (a->text() == view.model().mnuStatistics.Caption) statistics = a;
    ASSERT_TRUE(statistics && statistics->isEnabled());
    statistics->trigger();
    QPointer<BreathHoldStatisticsView> window;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* found = dynamic_cast<BreathHoldStatisticsView*>(w)) window = found;
    ASSERT_TRUE(window && window->isVisible());
    EXPECT_EQ(window->table().rowCount(), 1);  // no hold: the curve's summary alone
    view.close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(window.isNull());
    EXPECT_EQ(reports, QStringList());
}

}  // namespace
}  // namespace zel::test
