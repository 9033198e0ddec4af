// Lining curves up on a common breath hold, and exporting time slices of them.
#include <gtest/gtest.h>

#include <QFile>

#include "review/review_rig.h"

namespace zel::test {
namespace {

TEST(Alignment, offers_the_holds_every_shown_curve_has_and_apply_puts_the_chosen_one_at_zero) {
    ReviewRig rig;
    rig.open_on({rig.write_curve(QStringLiteral("three.dat"), breathing_with_holds(3)),
                 rig.write_curve(QStringLiteral("five.dat"), breathing_with_holds(5)),
                 rig.write_curve(QStringLiteral("one.dat"), breathing_with_holds(1))});
    PatientCurves& w = rig.window;
    auto shifts = [&w] {
        return std::vector{w.curve_info[0].time_shift, w.curve_info[1].time_shift,
                           w.curve_info[2].time_shift};
    };
    EXPECT_EQ(w.comboAlign.items, (QStringList{"None", "1"}));
    w.PatientList_ItemCheck(3, false);
    EXPECT_EQ(w.comboAlign.items, (QStringList{"None", "1", "2", "3"}));
    EXPECT_EQ(w.comboAlign.ListIndex, 0);
    w.comboAlign.ListIndex = 2;
    EXPECT_EQ(shifts(), (std::vector<double>{0, 0, 0})) << "choosing alone changes nothing";
    w.buttonApply_Click();
    EXPECT_EQ(w.curve_info[2].time_shift, 0) << "too few holds";
    for (int c = 0; c < 2; ++c) {
        const CurveInfo& info = w.curve_info[c];
        EXPECT_DOUBLE_EQ(info.time_shift, -info.breath_hold_times[1]) << c;
        // The hold's run starts at x = 0 on the chart.
        int at_zero = 0;
        for (int k = info.first_element + 3; k <= info.first_element + info.element_count; ++k) {
            const ChartElement& e = *w.NTGraph1.element(k);
            at_zero += e.width == 5 && std::abs(e.x[0]) < 1e-9;
        }
        EXPECT_EQ(at_zero, 1) << c;
    }
    EXPECT_FALSE(w.NTGraph1.element(w.curve_info[2].first_element + 3)->show);
    EXPECT_FALSE(w.PatientList.Enabled || w.mnuExport.Enabled);
    EXPECT_EQ(w.comboAlign.ListIndex, 2) << "the selection stays shown";
    int32_t start, end;
    w.time_range(start, end);
    EXPECT_EQ(std::pair(start, end), std::pair(-15, 45));  // the second hold starts at 15 s
    w.comboAlign.ListIndex = 0;
    w.buttonApply_Click();
    EXPECT_EQ(shifts(), (std::vector<double>{0, 0, 0}));
    EXPECT_TRUE(w.PatientList.Enabled && w.mnuExport.Enabled);
    w.PatientList_ItemCheck(1, false);
    EXPECT_EQ(w.comboAlign.items, (QStringList{"None", "1", "2", "3", "4", "5"}));
    w.PatientList_ItemCheck(2, false);
    EXPECT_TRUE(w.comboAlign.items.isEmpty());
    EXPECT_FALSE(w.comboAlign.Enabled || w.buttonApply.Enabled || w.mnuExport.Enabled);
    // An import throws the shifts away.
    w.PatientList_ItemCheck(2, true);
    w.comboAlign.ListIndex = 1;
    w.buttonApply_Click();
    rig.import({rig.write_curve(QStringLiteral("four.dat"), breathing_with_holds(4))});
    EXPECT_EQ(shifts(), (std::vector<double>{0, 0, 0}));
    EXPECT_EQ(w.comboAlign.ListIndex, 0);
    EXPECT_TRUE(w.PatientList.Enabled);
    // A shown curve without any hold takes the alignment away.
    rig.import({rig.write_curve(QStringLiteral("none.dat"), breathing_with_holds(0))});
    EXPECT_FALSE(w.comboAlign.Enabled);
}

struct ExportRig : ReviewRig {
    ExportRig() {
        // 1000 samples at 50 a second: the last index is 999, the limit 19.98 s.
        std::vector<Sample> samples = breathing_with_holds(1);
        samples[998] = {12.34, 1.234, 4, 1};
        samples[999] = {-0.5, -1.5, 3, 0};
        open_on({write_curve(QStringLiteral("Doe_1.dat"), samples)});
    }
    QString out(const char* name) const { return folder.path() + QLatin1Char('/') + name; }
    // Exports to `name` with these answers typed into the prompts.
    void export_to(const char* name, const std::vector<const char*>& typed) {
        for (const char* t : typed) boxes.type(QString::fromLatin1(t));
        dialogs.save_as(out(name));
        window.mnuExport_Click();
    }
    QStringList lines(const char* name) const {
        QFile file(out(name));
        file.open(QIODevice::ReadOnly);
        return QString::fromLatin1(file.readAll()).split(QStringLiteral("\r\n"));
    }
};

TEST(CurveExport, times_are_asked_until_they_fit_and_the_slice_is_written_in_print_zones) {
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
        ExportRig rig;
        rig.export_to("slice.dat", c.typed);
        EXPECT_EQ(rig.boxes.shown, c.shown);
        EXPECT_EQ((QStringList{rig.boxes.prompts.first(), rig.boxes.prompts.last(),
                               rig.dialogs.titles.back(), rig.dialogs.suffixes.back()}),
                  (QStringList{"Enter the start time for patient Doe_1 ",
                               "Enter the end time for patient Doe_1 ", "Exporting: Doe_1", "*.dat"}));
        const QStringList lines = rig.lines("slice.dat");
        EXPECT_EQ(lines.mid(0, 6), (QStringList{"CURVE_DATA_FILE_STAMP", "HeaderStart",
                                                "Threshold:1.2", "Count Frequency: 50 ",
                                                "Session:1", "HeaderEnd"}));
        EXPECT_EQ(lines.size(), 6 + c.rows + 1);
        // The last row is index 998; the file ends with its line.
        EXPECT_EQ(lines.mid(lines.size() - 2),
                  (QStringList{" 12.34         1.234         4             1 ", ""}));
        EXPECT_FALSE(QFile::permissions(rig.out("slice.dat")) & QFile::WriteOwner);
    }
}

TEST(CurveExport, a_cancel_gives_up_quietly_and_keeps_the_files_written) {
    ExportRig rig;
    rig.import({rig.write_curve(QStringLiteral("Roe_2.dat"), breathing_with_holds(2))});
    rig.export_to("first.dat", {"0", "1"});  // the second curve's start prompt is cancelled
    EXPECT_EQ(rig.boxes.prompts.size(), 3);
    EXPECT_EQ(rig.lines("first.dat").size(), 6 + 51 + 1);
    // Over a read-only earlier export the write fails silently and the next curve is asked.
    rig.window.PatientList_ItemCheck(2, false);
    rig.export_to("first.dat", {"0", "2"});
    EXPECT_EQ(rig.lines("first.dat").size(), 6 + 51 + 1);
    EXPECT_TRUE(rig.boxes.shown.isEmpty());
}

}  // namespace
}  // namespace zel::test
