// The review window: choosing and reading curve files, how a curve becomes chart elements,
// the measurement, lining curves up on a common breath hold and exporting slices of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QFile>
#include <chrono>

#include "fakes/files.h"
#include "review/review_rig.h"

namespace zel::test {
namespace {

// What a window holding no curve shows: after a cancelled dialog, and after a clear.
void expect_empty(const PatientCurves& w) {
    EXPECT_EQ(std::tuple(w.curve_count, w.PatientList.items.size(), w.NTGraph1.element_count(),
                         w.default_rate),
              std::tuple(int16_t(0), size_t(0), 0, 1.0));
    EXPECT_FALSE(w.mnuClearPlot.Enabled || w.mnuExport.Enabled || w.comboAlign.Enabled);
    EXPECT_EQ(w.NTGraph1.range(), (ChartRange{0, 1, -2, 2}));
}

TEST(CurveLoading, opens_on_its_dialog_keeps_check_marks_through_an_import_and_clears) {
    ReviewRig rig;
    PatientCurves& w = rig.window;
    EXPECT_EQ((QStringList{rig.dialogs.titles.back(), rig.dialogs.filters.back(),
                           rig.dialogs.opened_in.back(), w.Caption}),
              (QStringList{"Load Patient Curves", "Patient Curve Files (*.dat)|*.dat",
                           rig.folder.path(), "Patient Respiratory Curve(s) View Window"}));
    expect_empty(w);
    // Every entry and button reads a text of its own.
    QStringList captions;
    for (const Control* c :
         {&w.mnuOpenPatientFfiles, &w.mnuExport, &w.mnuStatistics, &w.mnuClearPlot, &w.mnuExit,
          &w.optPan, &w.optPanX, &w.optMeasure, &w.optZoom, &w.buttonResetZoom, &w.buttonApply})
        if (!c->Caption.isEmpty() && !captions.contains(c->Caption)) captions.append(c->Caption);
    EXPECT_EQ(captions.size(), 11) << qPrintable(captions.join('|'));
    const QString a = rig.write_curve(QStringLiteral("a.dat"), breathing_with_holds(2), 25);
    const QString b = rig.write_curve(QStringLiteral("b.dat"), breathing_with_holds(3));
    rig.open_on({a});
    w.PatientList_ItemCheck(1, false);
    rig.import({b});
    // One file chosen on its own is stored as it stands; the first curve's rate is the window's.
    EXPECT_EQ(w.curve_paths, (std::vector<QString>{a, b}));
    EXPECT_EQ(w.default_rate, 25.0);
    // The titles from the names; the unchecked curve was read again and stays hidden.
    const auto& items = w.PatientList.items;
    EXPECT_EQ(std::tuple(items.size(), items.at(0).text, items.at(0).checked, items.at(1).text,
                         items.at(1).checked, items.at(1).image),
              std::tuple(size_t(2), QStringLiteral("a"), false, QStringLiteral("b"), true, 2));
    const CurveInfo& first = w.curve_info[0];
    EXPECT_FALSE(w.NTGraph1.element(first.first_element + 3)->show);
    EXPECT_TRUE(w.NTGraph1.element(first.first_element + first.element_count + 3)->show);
    w.mnuClearPlot_Click();
    expect_empty(w);
}

TEST(CurveLoading, at_most_five_curves_and_a_refused_choice_changes_nothing) {
    // `chosen` files after `loaded` ones, through the dialog or handed to the window as it opens.
    struct Case { int loaded, chosen; bool straight, refused; };
    const Case cases[] = {{1, 4, false, false}, {2, 4, false, true}, {0, 5, false, false},
                          {4, 1, false, false}, {5, 1, false, true}, {0, 6, true, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.loaded << " + " << c.chosen);
        ReviewRig rig;
        QStringList first, more;
        for (int k = 0; k < c.loaded + c.chosen; ++k)
            (k < c.loaded ? first : more)
                .append(rig.write_curve(QStringLiteral("c%1.dat").arg(k), samples_of("1111")));
        if (!first.isEmpty()) rig.open_on(first);
        const qsizetype dialogs = rig.dialogs.titles.size();
        if (c.straight) rig.window.Form_Unload();
        c.straight ? rig.window.Form_Load(more) : rig.import(more);
        EXPECT_EQ(rig.dialogs.titles.size(), dialogs + !c.straight);
        const QStringList kept = c.straight ? more.mid(0, 5) : c.refused ? first : first + more;
        EXPECT_EQ(rig.window.curve_paths, std::vector<QString>(kept.begin(), kept.end()));
        // Every per-curve array holds exactly the loaded curves.
        EXPECT_EQ(std::pair(size_t(rig.window.curve_count), rig.window.curve_info.size()),
                  std::pair(size_t(kept.size()), size_t(kept.size())));
        EXPECT_EQ(rig.boxes.shown, c.refused ? QStringList{"You have exceeded the limit on the "
                                                           "number of curves that can be imported."}
                                             : QStringList());
    }
}

// The look of an element: colour, line type, width, its number of points and the volume of its
// first point.
using Look = std::tuple<Rgb, int, int, size_t, double>;
constexpr Rgb red{255, 0, 0}, black{0, 0, 0};

std::vector<Look> looks(const ReviewChart& chart) {
    std::vector<Look> result;
    for (int k = 1; k <= chart.element_count(); ++k) {
        const ChartElement& e = *chart.element(k);
        result.push_back({e.color, e.line_type, e.width, e.x.size(), e.y.at(0)});
    }
    return result;
}

TEST(CurveLoading, a_bad_file_stops_the_import_there_with_one_message) {
    // How each kind of bad file fails is the reader's; here a bad file in the reading, one
    // that is gone, and a curve whose look changes at every sample, which runs out of element
    // numbers: each stops the import quickly, with the same message, and the curve before it
    // stands on the chart as it would alone (the rollback once took its last run with it).
    const QByteArray alternating = QByteArray("10").repeated(20000);
    struct Case { const char* name; QByteArray text; };
    const Case cases[] = {
        {"volume not a number", curve_text({}) + "0.02;x;1;1\r\n"},
        {"missing on disk", {}},
        {"changes at every sample", curve_text(samples_of(alternating.constData()))},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ReviewRig rig;
        const QString good = rig.write_curve(QStringLiteral("good.dat"), breathing_with_holds(1));
        const QString bad = c.text.isNull() ? rig.folder.filePath(QStringLiteral("gone.dat"))
                                            : rig.write_text(QStringLiteral("bad.dat"), c.text);
        const auto started = std::chrono::steady_clock::now();
        rig.open_on({good, bad, rig.write_curve(QStringLiteral("third.dat"), samples_of("111"))});
        EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(2));
        EXPECT_EQ(std::pair(rig.boxes.shown, rig.boxes.styles),
                  std::pair(QStringList{"Not all patient curves could be imported because on of "
                                        "the files is invalid. Import halted at " + bad},
                            std::vector<int>{vbCritical}));
        EXPECT_EQ(std::tuple(rig.window.curve_paths, rig.window.curve_count,
                             rig.window.curve_time.size(), rig.window.PatientList.items.size(),
                             rig.window.mnuClearPlot.Enabled),
                  std::tuple(std::vector{good}, int16_t(1), size_t(1), size_t(1), true));
        const std::vector<Look> kept = looks(rig.window.NTGraph1);
        rig.open_on({good});
        EXPECT_EQ(looks(rig.window.NTGraph1), kept);
    }
}

// The threshold line, the zero line, then the runs; each run is drawn with the volume of the
// sample before its own, from its first sample on, which shows as a gap.
TEST(PlotCurve, one_element_per_run_of_equal_look_and_holds_only_from_free_breathing) {
    struct Case { const char* states; std::vector<double> holds; std::vector<Look> elements; };
    const Case cases[] = {
        {"11111", {},
         {{red, 0, 3, 4, 1.2}, {black, 0, 3, 4, 0}, {black, 0, 2, 2, 0}, {red, 0, 2, 3, 0.01}}},
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
        {"0001100", {0.10}, {}},  // a hold at the start of the file does not count
        // Neither a gap before the hold nor one inside it starts a hold.
        {"111-0001100-00", {0.16}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.states);
        ReviewRig rig;
        rig.open_on({rig.write_curve(QStringLiteral("c.dat"), samples_of(c.states))});
        // Times are sums of frame periods, so they are compared to the nanosecond.
        EXPECT_THAT(rig.window.curve_info[0].breath_hold_times,
                    testing::Pointwise(testing::DoubleNear(1e-9), c.holds));
        if (c.elements.empty()) continue;  // not looked at
        EXPECT_EQ(looks(rig.window.NTGraph1), c.elements);
        EXPECT_EQ(rig.window.element_total, static_cast<int>(c.elements.size()));
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
        {"reset zoom", [](ReviewRig& r) { r.window.buttonResetZoom_Click(); }, 4, ""},
        {"apply", [](ReviewRig& r) { r.window.buttonApply_Click(); }, 4, ""},
        {"unchecking", [](ReviewRig& r) { r.window.PatientList_ItemCheck(1, false); }, 4, ""},
        // The numbers of the new curve's elements would be off by the three.
        {"an import",
         [](ReviewRig& r) { r.import({r.write_curve("d.dat", samples_of("11111"))}); }, 8, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ReviewRig rig;
        rig.open_on({rig.write_curve(QStringLiteral("c.dat"), samples_of("11111"))});
        PatientCurves& w = rig.window;
        w.optMeasure_Click();
        w.NTGraph1.track_press_x = 1500;  // 1.5 s
        w.NTGraph1.track_press_y = 250;   // 0.25 L
        cursor(w, true, 1.5, 0.25);
        cursor(w, true, 3.7254, 1.0);
        EXPECT_EQ((QStringList{w.XYInfo.Caption, w.XYInfo4.Caption, w.XYInfo2.Caption,
                               w.measured_time_label.Caption}),
                  (QStringList{"2.225", "0.75", "3.725\n0:00.04  h:m:s", "time [s]"}));
        cursor(w, false, 4.0, 1.0);
        // A grey dot at each end and a dotted line between them.
        EXPECT_EQ(std::tuple(w.measure_present, w.element_total, w.NTGraph1.element(6)->line_type,
                             w.NTGraph1.element(6)->x, w.NTGraph1.element(7)->y),
                  std::tuple(true, int16_t(7), 2, std::vector{1.5, 4.0}, std::vector{1.0, 1.0}));
        c.act(rig);
        EXPECT_EQ(std::tuple(w.measure_present, w.element_total, w.NTGraph1.element_count(),
                             w.XYInfo.Caption),
                  std::tuple(false, int16_t(c.elements), c.elements, QString(c.reading)));
    }
}

// Right clicks once doubled the range without end: after about 25 of them the cursor's time
// no longer fitted its 32 bits, and the read-out ended the program.
TEST(ChartGestures, zoom_out_and_pans_stop_at_bounds_where_every_cursor_value_reads) {
    struct Case {
        ChartRange home, bounds;
    };
    const Case cases[] = {
        {{0, 20, -1.5, 1.5}, {-990, 1010, -150, 150}},  // a hundred times each way
        // The range kept for no curve shown reaches the end of 32 bits: no further out there.
        {{1, -2147483647, -2147483647.3, 2147483647.3},
         {-2147483647, 1e6, -2147483647.3, 2147483647.3}},
        {{0, 28800, -3, 3}, {-1e6, 1e6, -300, 300}},    // eight hours: no further than 10^6 s
        {{1.5e6, 2e6, -1, 1}, {-1e6, 2e6, -100, 100}},  // a file's times beyond stay in reach
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.home.x_max);
        ReviewRig rig;
        rig.open_on({rig.write_curve(QStringLiteral("c.dat"), breathing_with_holds(1))});
        ReviewChart& chart = rig.window.NTGraph1;
        chart.SetRange(c.home.x_min, c.home.x_max, c.home.y_min, c.home.y_max);
        // The cursor across the range shown and beyond its edges; each read-out goes through.
        auto sweep = [&] {
            const ChartRange v = chart.view_range();
            for (int k = -10; k <= 110; ++k) {
                EXPECT_NO_THROW(
                    rig.window.NTGraph1_CursorPosition(v.x_min + (v.x_max - v.x_min) * k / 100,
                                                       v.y_max - (v.y_max - v.y_min) * k / 100));
            }
        };
        for (int click = 0; click < 60; ++click) {
            const ChartRange v = chart.view_range();
            chart.zoom_out_at(v.x_min * 0.7 + v.x_max * 0.3, v.y_min * 0.2 + v.y_max * 0.8);
        }
        EXPECT_EQ(chart.view_range(), c.bounds);
        sweep();
        // Long drags both ways along both axes: the range keeps its size and stops at the edge.
        for (const double d : {1.0, -1.0}) {
            chart.reset_view();
            const ChartRange home = chart.view_range();
            const double w = std::abs(home.x_max - home.x_min), h = home.y_max - home.y_min;
            for (int step = 0; step < 500; ++step) {
                const ChartRange v = chart.view_range();
                chart.gesture_range(
                    {v.x_min + d * w, v.x_max + d * w, v.y_min + d * h, v.y_max + d * h});
            }
            const ChartRange v = chart.view_range();
            const ChartRange& b = c.bounds;
            EXPECT_EQ(d > 0 ? std::pair(v.x_max, v.y_max) : std::pair(v.x_min, v.y_min),
                      d > 0 ? std::pair(b.x_max, b.y_max) : std::pair(b.x_min, b.y_min));
            EXPECT_NEAR(v.x_max - v.x_min, w, 1e-6 * w);
            EXPECT_NEAR(v.y_max - v.y_min, h, 1e-6 * h);
            sweep();
        }
    }
}

// The volume range covers the shown curves symmetrically about zero, with 0.3 L of room.
TEST(Alignment, offers_the_holds_every_shown_curve_has_and_apply_puts_the_chosen_one_at_zero) {
    ReviewRig rig;
    rig.open_on({rig.write_curve(QStringLiteral("three.dat"), breathing_with_holds(3)),
                 rig.write_curve(QStringLiteral("five.dat"), breathing_with_holds(5, 2.5)),
                 rig.write_curve(QStringLiteral("one.dat"), breathing_with_holds(1, -3))});
    PatientCurves& w = rig.window;
    auto shifts = [&w] {
        return std::vector{w.curve_info[0].time_shift, w.curve_info[1].time_shift,
                           w.curve_info[2].time_shift};
    };
    EXPECT_EQ(w.comboAlign.items, (QStringList{"None", "1"}));
    EXPECT_NEAR(w.NTGraph1.range().y_min, -3.3, 1e-12);  // the deep trough
    w.PatientList_ItemCheck(3, false);
    EXPECT_EQ(w.comboAlign.items, (QStringList{"None", "1", "2", "3"}));
    EXPECT_NEAR(w.NTGraph1.range().y_max, 2.8, 1e-12);  // the highest peak
    w.comboAlign.ListIndex = 2;
    w.buttonApply_Click();
    // The second hold starts at 15 s on both shown curves; the third has too few holds.
    EXPECT_THAT(shifts(),
                testing::Pointwise(testing::DoubleNear(1e-9), std::vector{-15.0, -15.0, 0.0}));
    // The second hold's run of each shown curve starts at x = 0 on the chart.
    const auto& elements = w.NTGraph1.elements();
    EXPECT_EQ(std::count_if(elements.begin() + 1, elements.end(), [](const auto& e) {
                  return e->width == 5 && std::abs(e->x.at(0)) < 1e-9;
              }), 2);
    EXPECT_FALSE(w.NTGraph1.element(w.curve_info[2].first_element + 3)->show ||
                 w.PatientList.Enabled || w.mnuExport.Enabled);
    EXPECT_EQ(w.comboAlign.ListIndex, 2) << "the selection stays shown";
    EXPECT_EQ(std::pair(w.NTGraph1.range().x_min, w.NTGraph1.range().x_max), std::pair(-15., 45.));
    w.comboAlign.ListIndex = 0;
    w.buttonApply_Click();
    EXPECT_EQ(shifts(), (std::vector<double>{0, 0, 0}));
    EXPECT_TRUE(w.PatientList.Enabled && w.mnuExport.Enabled);
    w.PatientList_ItemCheck(1, false);
    w.PatientList_ItemCheck(2, false);
    EXPECT_FALSE(!w.comboAlign.items.isEmpty() || w.comboAlign.Enabled || w.buttonApply.Enabled ||
                 w.mnuExport.Enabled);
    // An import throws the shifts away.
    w.PatientList_ItemCheck(2, true);
    w.comboAlign.ListIndex = 1;
    w.buttonApply_Click();
    rig.import({rig.write_curve(QStringLiteral("four.dat"), breathing_with_holds(4))});
    EXPECT_EQ(shifts(), (std::vector<double>{0, 0, 0}));
    EXPECT_EQ(std::pair(w.comboAlign.ListIndex, w.PatientList.Enabled), std::pair(0, true));
    // A shown curve without any hold takes the alignment away.
    rig.import({rig.write_curve(QStringLiteral("none.dat"), breathing_with_holds(0))});
    EXPECT_FALSE(w.comboAlign.Enabled);
}

// Two curves shown; the times of the second are never answered, which cancels its export.
struct ExportRig : ReviewRig {
    ExportRig() {
        // 1000 samples at 50 a second: the last index is 999, the limit 19.98 s.
        std::vector<Sample> samples = breathing_with_holds(1);
        samples[998] = {12.34, 1.234, 4, 1};
        samples[999] = {-0.5, -1.5, 3, 0};
        open_on({write_curve(QStringLiteral("Doe_1.dat"), samples),
                 write_curve(QStringLiteral("Roe_2.dat"), breathing_with_holds(2))});
    }
    // Exports to `name` with these answers typed into the prompts; the file's lines.
    QStringList export_to(const char* name, const std::vector<const char*>& typed) {
        for (const char* t : typed) boxes.type(QString::fromLatin1(t));
        dialogs.save_as(folder.filePath(QLatin1String(name)));
        window.mnuExport_Click();
        return QString::fromLatin1(contents(folder.filePath(QLatin1String(name))))
            .split(QStringLiteral("\r\n"));
    }
};

TEST(CurveExport, times_are_asked_until_they_fit_the_slice_is_written_and_a_cancel_keeps_it) {
    const QString outside =
        "The entered time is not within the range of the patient curve. Please try again.";
    const QString numeric = "Please select a numeric value ";
    const QString later = "Please enter an end time that is greater than the start time.";
    struct Case { std::vector<const char*> typed; QStringList shown; qsizetype rows; };
    const Case cases[] = {
        // 19.97 s is index 998.5, which rounds to the even 998; 19.96 s is index 998 as well.
        {{"19.96", "19.97"}, {}, 1},
        {{"x", "-1", "19.98", "5", "abc", "5", "4", "19.98", "19.97"},
         {numeric, outside, outside, numeric, later, later, outside}, 998 - 250 + 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.typed.front());
        ExportRig rig;
        const QStringList lines = rig.export_to("slice.dat", c.typed);
        EXPECT_EQ(rig.boxes.shown, c.shown);
        const QStringList& prompts = rig.boxes.prompts;
        EXPECT_EQ((prompts.mid(0, 1) + prompts.mid(prompts.size() - 2) +
                   QStringList{rig.dialogs.titles.back(), rig.dialogs.suffixes.back()}),
                  (QStringList{"Enter the start time for patient Doe_1 ",
                               "Enter the end time for patient Doe_1 ",
                               "Enter the start time for patient Roe_2 ", "Exporting: Doe_1",
                               "*.dat"}));
        // The header as the curve's file has it.
        EXPECT_EQ(lines.mid(0, 6), QString(curve_text({})).split(QStringLiteral("\r\n")).mid(0, 6));
        EXPECT_EQ(lines.size(), 6 + c.rows + 1);
        // The last row is index 998; the file ends with its line.
        EXPECT_EQ(lines.mid(lines.size() - 2),
                  (QStringList{" 12.34         1.234         4             1 ", ""}));
        EXPECT_FALSE(QFile::permissions(rig.folder.filePath("slice.dat")) & QFile::WriteOwner);
    }
}

// The export is renamed over the file it replaces: over the session's curve file the recording
// went on into a file no longer on disk, and the rest of the session was lost.
TEST(CurveExport, never_replaces_a_curve_shown_or_being_recorded_under_any_name) {
    // The target, and the file it is a hard (or else a symbolic) link to.
    struct Case {
        const char* target;
        const char* to;
        bool hard;
    };
    const Case cases[] = {{"Doe_1.dat", nullptr, false},    {"hard.dat", "Doe_1.dat", true},
                          {"soft.dat", "Doe_1.dat", false}, {"Roe_2.dat", nullptr, false},
                          {"Doe_3.dat", nullptr, false},    {"rec.dat", "Doe_3.dat", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.target);
        ExportRig rig;
        const QString recording = rig.write_curve("Doe_3.dat", breathing_with_holds(1));
        rig.window.files_being_written = [recording] { return QStringList{recording}; };
        const QString target = rig.folder.filePath(c.target);
        if (c.to) {
            const QByteArray to = QFile::encodeName(rig.folder.filePath(c.to));
            const QByteArray name = QFile::encodeName(target);
            ASSERT_EQ(c.hard ? ::link(to, name) : ::symlink(to, name), 0);
        }
        auto curves = [&rig] {
            QByteArrayList result;
            for (const char* name : {"Doe_1.dat", "Roe_2.dat", "Doe_3.dat"})
                result.append(contents(rig.folder.filePath(name)));
            return result;
        };
        const QByteArrayList before = curves();
        rig.dialogs.save_as(target);  // refused; then the name that export_to gives
        const QStringList lines = rig.export_to("fresh.dat", {"1", "2"});
        EXPECT_EQ(curves(), before);
        EXPECT_EQ(rig.boxes.styles, std::vector<int>{vbExclamation});
        EXPECT_EQ(rig.boxes.shown,
                  QStringList{target + " is a curve file shown in this window or "
                                       "being recorded, and an export can't replace it. "
                                       "Please choose another file name."});
        EXPECT_EQ(lines.size(), 6 + 51 + 1);  // rows 50 to 100 under the new name
    }
}

}  // namespace
}  // namespace zel::test
