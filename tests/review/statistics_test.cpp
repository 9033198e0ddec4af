// Breath-hold statistics: hand-made holds measured to the millilitre, holds found where the
// review's Align Curves finds them, a patient's sessions and `zelmoor --stats`, the statistics
// window through its model, and the curve reader's plain lines against its general reading.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <cmath>

#include "data/curve_file_reader.h"
#include "data/locale_number.h"
#include "fakes/files.h"
#include "review/breath_hold_statistics.h"
#include "review/review_rig.h"
#include "review/statistics_report.h"

namespace zel::test {
namespace {

// A run of frames: `count` of them in balloon state `balloon`, the volume starting at `volume`
// and rising by `slope` a frame; `lost_from`..`lost_to` (within the run) never reach the file.
struct Run { int count, balloon; double volume, slope = 0; int lost_from = -1, lost_to = -1; };

std::vector<Sample> frames(const std::vector<Run>& runs) {
    std::vector<Sample> samples;
    int frame = 0;
    for (const Run& r : runs)
        for (int k = 0; k < r.count; ++k, ++frame)
            if (k < r.lost_from || k >= r.lost_to)
                samples.push_back({0.02 * (frame + 1), r.volume + r.slope * k, r.balloon, 1});
    return samples;
}

// The header as the console writes it, with the session's lines.
QByteArray session_curve(const std::vector<Sample>& samples, const char* session,
                         const char* date) {
    return curve_text(samples).replace("Session:1\r\n", QByteArray("Session Number:             ") +
                                                            session + "\r\nDate:         " + date +
                                                            "\r\nTime:         09:05:07\r\n");
}

const Run free_second{50, 1, 1.0};

// A steady hold, a sagging one, one that lost 20 frames in its first second, then a file
// without holds: the figures to the millilitre (threshold 1.2 L).
TEST(HoldStatistics, measures_steady_sagging_and_gapped_holds_to_the_millilitre) {
    ReviewRig rig;
    const QString path = rig.write_curve(
        "holds.dat", frames({free_second, {150, 4, 1.5}, free_second, {200, 4, 1.6, -0.001},
                             free_second, {150, 4, 1.4, 0.001, 40, 60}, free_second}));
    const CurveStatistics curve = read_curve_statistics(path, QLatin1Char('.'));
    struct Expected { double start, length; long long lost; double mean, sd, min, max, drift, from_threshold; };
    const Expected expected[] = {
        {1.00, 3.00, 0, 1.500, 0.000, 1.500, 1.500, 0.000, 0.300},
        {5.00, 4.00, 0, 1.5005, 0.057879, 1.401, 1.600, -0.150, 0.3005},
        // The first second is that of the hold, lost frames and all: 0 to 39 of it were read.
        {10.00, 3.00, 20, 1.478346, 0.045422, 1.400, 1.549, 0.105, 0.278346},
    };
    ASSERT_EQ(curve.holds.size(), std::size(expected));
    for (size_t k = 0; k < curve.holds.size(); ++k) {
        SCOPED_TRACE(k + 1);
        const HoldFigures& h = curve.holds[k];
        const Expected& e = expected[k];
        EXPECT_EQ(std::tuple(h.number, h.frames_lost), std::tuple(int(k) + 1, e.lost));
        const double got[] = {h.start, h.length, h.mean, h.sd, h.min, h.max, h.drift, h.from_threshold};
        const double want[] = {e.start, e.length, e.mean, e.sd, e.min, e.max, e.drift, e.from_threshold};
        for (int i = 0; i < 8; ++i) EXPECT_NEAR(got[i], want[i], 5e-4) << i;
    }
    const HoldSummary& s = curve.summary;
    EXPECT_EQ(std::tuple(s.holds, s.frames_lost), std::tuple(3, 20LL));
    const double got[] = {s.mean_length, s.mean_level,    s.level_sd,      s.min,
                          s.max,         s.largest_drift, s.from_threshold};
    const double want[] = {3.333333, 1.492949, 0.012649, 1.400, 1.600, -0.150, 0.292949};
    for (int i = 0; i < 7; ++i) EXPECT_NEAR(got[i], want[i], 5e-4) << i;

    // Without holds: a summary of none, its figures left empty.
    StatisticsTable table;
    add_curve_rows(table,
                   read_curve_statistics(rig.write_curve("free.dat", frames({{500, 1, 1.0}})),
                                         QLatin1Char(',')),
                   0, QLatin1Char(','));
    ASSERT_EQ(table.rows.size(), 1u);
    EXPECT_EQ(table.rows[0].cells,
              (QStringList{"free", "", "Per curve", "0", "", "", "", "", "", "", "", "", "0"}));
    add_curve_rows(table, curve, 1, QLatin1Char(','));
    EXPECT_EQ(table.rows[3].cells,
              (QStringList{"holds", "", "3", "", "10,00", "3,00", "1,478", "0,045", "1,400",
                           "1,549", "0,105", "0,278", "20"}));
}

// Hold k of the statistics is hold k of Align Curves, wherever the review finds a hold or not.
TEST(HoldStatistics, finds_the_holds_where_the_review_does) {
    for (const char* states : {"1110011001", "1122001", "0001100", "111-0001100-00", "11000"}) {
        SCOPED_TRACE(states);
        ReviewRig rig;
        rig.open_on({rig.write_curve("c.dat", samples_of(states))});
        CurveData curve;
        LoadCurveData2(rig.window.curve_paths[0], curve, QLatin1Char('.'));
        std::vector<double> starts;
        for (const HoldFigures& h : breath_holds(samples_of(curve))) starts.push_back(h.start);
        EXPECT_THAT(starts, testing::Pointwise(testing::DoubleNear(1e-9),
                                               rig.window.curve_info[0].breath_hold_times));
    }
}

// A patient's folder: sessions in the order recorded, a session of two files, the spread
// between sessions; a file that is no curve is named with the reason and the rest is printed.
TEST(HoldStatistics, a_patient_folder_by_session_and_the_exit_status) {
    ReviewRig rig;
    const QString folder = rig.folder.filePath("Doe_Jane_A1");
    QDir().mkpath(folder);
    auto put = [&](const char* name, const QByteArray& text) {
        return write(folder + '/' + name, text);
    };
    auto hold_at = [](double level) { return frames({free_second, {100, 4, level}, free_second}); };
    put("Doe_a.dat", session_curve(hold_at(1.6), "2", "11-21-2026"));
    put("Doe_b.dat", session_curve(hold_at(1.5), "1", "11-20-2026"));
    const QString single = put("Doe_c.dat", session_curve(hold_at(1.7), "2", "11-21-2026"));

    const StatisticsReport good = statistics_report({folder}, true, QLatin1Char('.'), 2);
    EXPECT_EQ(std::tuple(good.status, good.err), std::tuple(0, QString()));
    const QStringList lines = good.out.split("\r\n", Qt::SkipEmptyParts);
    EXPECT_EQ(lines.mid(1), (QStringList{
                                "Doe_b,1,1,,1.00,2.00,1.500,0.000,1.500,1.500,0.000,0.300,0",
                                ",1,Per session,1,,2.00,1.500,,1.500,1.500,0.000,0.300,0",
                                "Doe_a,2,1,,1.00,2.00,1.600,0.000,1.600,1.600,0.000,0.400,0",
                                "Doe_c,2,1,,1.00,2.00,1.700,0.000,1.700,1.700,0.000,0.500,0",
                                ",2,Per session,2,,2.00,1.650,0.071,1.600,1.700,0.000,0.450,0",
                                ",,Between sessions,3,,,1.575,0.106,,,,,",
                            }));
    EXPECT_EQ(lines.front(),
              "Curve,Session,Hold,Holds,Start [s],Length [s],Mean [L],SD [L],"
              "Min [L],Max [L],Drift [L],Mean - threshold [L],Frames lost");

    put("notes.dat", "shopping list\r\n");
    struct Case { QStringList paths; int status; const char* out; QString err; };
    const QString gone = rig.folder.filePath("gone.dat"), empty = rig.folder.filePath("empty");
    // clang-format off
    const Case cases[] = {
        {{folder}, 1, "Between sessions", "zelmoor: " + folder + "/notes.dat: " + folder + "/notes.dat is not in the expected ZEL format. (515)\n"},
        {{single}, 0, "Per curve", ""},
        {{gone, single}, 1, "Doe_c", "zelmoor: " + gone + ": no such file or folder\n"},
        {{empty}, 1, "", "zelmoor: " + empty + ": no curve files (*.dat) in this folder\n"},
    };
    // clang-format on
    QDir().mkpath(rig.folder.filePath("empty"));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.paths.join(' ').toStdString());
        const StatisticsReport report = statistics_report(c.paths, false, QLatin1Char('.'), 2);
        EXPECT_EQ(std::tuple(report.status, report.err), std::tuple(c.status, c.err));
        EXPECT_TRUE(report.out.contains(QLatin1String(c.out))) << report.out.toStdString();
    }
}

// The window takes the curves shown, in the review's colours; its table is copied as tabs and
// saved whole as CSV, never over another kind of file, and a failed save says why.
TEST(BreathHoldStatistics, the_shown_curves_copied_and_saved) {
    ReviewRig rig;
    const auto two_holds =
        frames({free_second, {100, 4, 1.5}, free_second, {100, 4, 1.7}, free_second});
    rig.open_on({rig.write_curve("a.dat", two_holds),
                 rig.write_curve("b.dat", frames({{200, 1, 1.0}})),
                 rig.write_curve("c.dat", two_holds)});
    EXPECT_EQ(rig.window.mnuStatistics.Caption, "Breath-hold Statistics");
    EXPECT_TRUE(rig.window.mnuStatistics.Enabled);
    rig.window.PatientList_ItemCheck(2, false);

    BreathHoldStatistics stats(rig.window.platform, rig.window);
    ASSERT_EQ(stats.curves.size(), 2u);
    EXPECT_EQ(std::tuple(stats.curves[0].title, stats.curves[1].title, stats.curves[1].colour,
                         stats.curves[1].holds.size()),
              std::tuple(QString("a"), QString("c"), Rgb{0, 0, 255}, size_t(2)));
    std::vector<std::pair<StatisticsRowKind, int>> rows;
    for (const StatisticsRow& row : stats.table.rows) rows.emplace_back(row.kind, row.curve);
    using K = StatisticsRowKind;
    EXPECT_EQ(rows, (std::vector<std::pair<K, int>>{{K::hold, 0}, {K::hold, 0}, {K::per_curve, 0},
                                                    {K::hold, 1}, {K::hold, 1}, {K::per_curve, 1},
                                                    {K::between_curves, -1}}));
    const QStringList copied = stats.copy_text().split('\n', Qt::SkipEmptyParts);
    EXPECT_EQ(copied.size(), 8);
    EXPECT_EQ(copied[3], "a\t\tPer curve\t2\t\t2.00\t1.600\t0.141\t1.500\t1.700\t0.000\t0.400\t0");

    const QString saved = rig.folder.filePath("stats.csv");
    const QString curve = rig.window.curve_paths[0];
    const QByteArray curve_bytes = contents(curve);
    struct Case { QString path; const char* shown; };
    // clang-format off
    const Case cases[] = {
        {saved, nullptr}, {curve, " is not a CSV file, and the statistics replace no other file."},
        {rig.folder.filePath("gone/stats.csv"), "The statistics were not saved: Path not found: "},
        {"", nullptr},  // cancelled
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path.toStdString());
        rig.boxes.shown.clear();
        rig.dialogs.save_as(c.path);
        stats.cmdSave_Click();
        EXPECT_EQ(rig.boxes.shown.size(), c.shown ? 1 : 0);
        if (c.shown) {
            EXPECT_TRUE(rig.boxes.shown.front().contains(c.shown));
        }
    }
    EXPECT_EQ(QString::fromUtf8(contents(saved)), csv_text(stats.table));
    EXPECT_EQ(contents(curve), curve_bytes);

    for (int k = 1; k <= 3; ++k) rig.window.PatientList_ItemCheck(k, false);
    EXPECT_FALSE(rig.window.mnuStatistics.Enabled);
}

// Lines as the console writes them are read in one pass; each number must come out as the
// general reading gives it, and every other line must go the general way.
TEST(CurveFileReader, plain_lines_read_as_the_general_reading) {
    const char* volumes[] = {"1", "-0.004", "131.068", "-0", ".5", "5.", "1.104", "0.1",
                             "123456789.012345", "1234567890.1234567", "1e3", "+2.5", " 1.5",
                             "1.5 ", "1,5", "0.30000000000000004", "000000000000000000001.25"};
    // On a comma machine the same numbers with point and comma exchanged.
    auto on = [](char separator, QByteArray text) {
        if (separator == ',')
            for (char& c : text) c = c == '.' ? ',' : c == ',' ? '.' : c;
        return text;
    };
    for (const char separator : {'.', ','}) {
        for (const char* volume : volumes) {
            SCOPED_TRACE(std::string(volume) + " " + separator);
            const QByteArray field = on(separator, volume);
            ReviewRig rig;
            CurveData curve;
            LoadCurveData2(rig.write_text("v.dat", curve_text({}) + on(separator, "0.02;") + field +
                                                       ";4;1; - ; - ; - \r\n"),
                           curve, QLatin1Char(separator));
            const double general = locale_number(
                field.constData(), field.constData() + field.size(), separator, "test");
            ASSERT_EQ(curve.volume.size(), 1u);
            EXPECT_EQ(std::signbit(curve.volume[0]), std::signbit(general));
            EXPECT_EQ(curve.volume[0], general);
        }
    }
}

}  // namespace
}  // namespace zel::test
