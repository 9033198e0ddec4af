// Lining curves up on a common breath hold, and exporting time slices of them.
#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>

#include "review/review_rig.h"

namespace zel::test {
namespace {

QStringList offers(const PatientCurves& w) { return w.comboAlign.items; }

TEST(Alignment, offers_the_holds_every_shown_curve_has) {
    ReviewRig rig;
    rig.open_on({rig.write_curve(QStringLiteral("three.dat"), breathing_with_holds(3)),
                 rig.write_curve(QStringLiteral("five.dat"), breathing_with_holds(5))});
    PatientCurves& w = rig.window;
    EXPECT_EQ(offers(w), (QStringList{"None", "1", "2", "3"}));
    EXPECT_EQ(w.comboAlign.ListIndex, 0);
    w.PatientList_ItemCheck(1, false);
    EXPECT_EQ(offers(w), (QStringList{"None", "1", "2", "3", "4", "5"}));
    EXPECT_EQ(w.comboAlign.ListIndex, 0);
    w.PatientList_ItemCheck(2, false);
    EXPECT_TRUE(offers(w).isEmpty());
    EXPECT_FALSE(w.comboAlign.Enabled);
    EXPECT_FALSE(w.buttonApply.Enabled);
    // A shown curve without any hold takes the whole alignment away.
    rig.import({rig.write_curve(QStringLiteral("none.dat"), breathing_with_holds(0))});
    EXPECT_FALSE(w.comboAlign.Enabled);
}

TEST(Alignment, apply_puts_the_chosen_hold_at_zero_and_locks_the_list_until_none) {
    ReviewRig rig;
    rig.open_on({rig.write_curve(QStringLiteral("three.dat"), breathing_with_holds(3)),
                 rig.write_curve(QStringLiteral("five.dat"), breathing_with_holds(5)),
                 rig.write_curve(QStringLiteral("one.dat"), breathing_with_holds(1))});
    PatientCurves& w = rig.window;
    w.PatientList_ItemCheck(3, false);
    w.comboAlign.ListIndex = 2;
    EXPECT_EQ(w.curve_info[0].time_shift, 0) << "choosing alone changes nothing";
    w.buttonApply_Click();
    for (int c = 0; c < 2; ++c) {
        const CurveInfo& info = w.curve_info[c];
        EXPECT_DOUBLE_EQ(info.time_shift, -info.breath_hold_times[1]) << c;
        // The hold's run starts at x = 0 on the chart.
        bool found = false;
        for (int k = info.first_element + 3; k <= info.first_element + info.element_count; ++k) {
            const ChartElement& e = *w.NTGraph1.element(k);
            if (e.width == 5 && std::abs(e.x.front()) < 1e-9) found = true;
        }
        EXPECT_TRUE(found) << c;
    }
    EXPECT_EQ(w.curve_info[2].time_shift, 0) << "too few holds";
    const CurveInfo& hidden = w.curve_info[2];
    EXPECT_FALSE(w.NTGraph1.element(hidden.first_element + 3)->show);
    EXPECT_FALSE(w.PatientList.Enabled);
    EXPECT_FALSE(w.mnuExport.Enabled);
    EXPECT_EQ(w.comboAlign.ListIndex, 2) << "the selection stays shown";
    int32_t start, end;
    w.time_range(start, end);
    EXPECT_EQ(start, -15);  // the second hold starts at 15 s on both shown curves
    EXPECT_EQ(end, 45);
    w.comboAlign.ListIndex = 0;
    w.buttonApply_Click();
    EXPECT_EQ(w.curve_info[0].time_shift, 0);
    EXPECT_TRUE(w.PatientList.Enabled);
    EXPECT_TRUE(w.mnuExport.Enabled);
}

TEST(Alignment, an_import_throws_the_shifts_away) {
    ReviewRig rig;
    rig.open_on({rig.write_curve(QStringLiteral("a.dat"), breathing_with_holds(3))});
    rig.window.comboAlign.ListIndex = 3;
    rig.window.buttonApply_Click();
    rig.import({rig.write_curve(QStringLiteral("b.dat"), breathing_with_holds(2))});
    EXPECT_EQ(rig.window.curve_info[0].time_shift, 0);
    EXPECT_EQ(rig.window.comboAlign.ListIndex, 0);
    EXPECT_TRUE(rig.window.PatientList.Enabled);
}

struct ExportRig : ReviewRig {
    ExportRig() {
        // 1000 samples at 50 a second: the last index is 999, the limit 19.98 s.
        std::vector<Sample> samples = breathing_with_holds(1);
        samples[998] = {12.34, 1.234, 4, 1};
        samples[999] = {-0.5, -1.5, 3, 0};
        source = write_curve(QStringLiteral("Doe_1.dat"), samples);
        open_on({source});
    }
    QString source;
    QString out(const char* name) const { return folder.path() + QLatin1Char('/') + QLatin1String(name); }
    QStringList lines(const QString& path) const {
        QFile file(path);
        file.open(QIODevice::ReadOnly);
        return QString::fromLatin1(file.readAll()).split(QStringLiteral("\r\n"));
    }
};

TEST(CurveExport, writes_the_header_and_one_row_per_sample_in_print_zones) {
    ExportRig rig;
    rig.boxes.type(QStringLiteral("19.96"));
    rig.boxes.type(QStringLiteral("19.97"));  // 998.5 rounds to the even index 998
    rig.dialogs.save_as(rig.out("slice.dat"));
    rig.window.mnuExport_Click();
    EXPECT_EQ(rig.boxes.prompts, (QStringList{"Enter the start time for patient Doe_1 ",
                                              "Enter the end time for patient Doe_1 "}));
    EXPECT_EQ(rig.dialogs.titles.back(), QStringLiteral("Exporting: Doe_1"));
    EXPECT_EQ(rig.dialogs.suffixes.back(), QStringLiteral("*.dat"));
    const QStringList lines = rig.lines(rig.out("slice.dat"));
    EXPECT_EQ(lines.mid(0, 6), (QStringList{"CURVE_DATA_FILE_STAMP", "HeaderStart", "Threshold:1.2",
                                            "Count Frequency: 50 ", "Session:1", "HeaderEnd"}));
    // Index 998 only: 19.96 s is index 998 as well.
    EXPECT_EQ(lines.mid(6), (QStringList{QStringLiteral(" 12.34         1.234         4             1 "),
                                         QString()}));
    EXPECT_FALSE(QFile::permissions(rig.out("slice.dat")) & QFile::WriteOwner);
    EXPECT_TRUE(rig.boxes.shown.isEmpty()) << "a good export ends without a message";
}

TEST(CurveExport, times_are_asked_again_until_they_fit_the_curve) {
    ExportRig rig;
    for (const char* typed : {"x", "-1", "19.98", "5", "abc", "5", "4", "19.98", "19.97"})
        rig.boxes.type(QString::fromLatin1(typed));
    rig.dialogs.save_as(rig.out("slice.dat"));
    rig.window.mnuExport_Click();
    EXPECT_EQ(rig.boxes.shown,
              (QStringList{"Please select a numeric value ",
                           "The entered time is not within the range of the patient curve. Please try again.",
                           "The entered time is not within the range of the patient curve. Please try again.",
                           "Please select a numeric value ",
                           "Please enter an end time that is greater than the start time.",
                           "Please enter an end time that is greater than the start time.",
                           "The entered time is not within the range of the patient curve. Please try again."}));
    EXPECT_EQ(rig.lines(rig.out("slice.dat")).size(), 6 + (998 - 250 + 1) + 1);
}

TEST(CurveExport, a_cancel_gives_up_quietly_and_keeps_the_files_written) {
    ExportRig rig;
    rig.import({rig.write_curve(QStringLiteral("Roe_2.dat"), breathing_with_holds(2))});
    rig.boxes.type(QStringLiteral("0"));
    rig.boxes.type(QStringLiteral("1"));
    rig.dialogs.save_as(rig.out("first.dat"));
    rig.window.mnuExport_Click();  // the second curve's start prompt is cancelled
    EXPECT_EQ(rig.boxes.prompts.size(), 3);
    EXPECT_EQ(rig.lines(rig.out("first.dat")).size(), 6 + 51 + 1);
    EXPECT_TRUE(rig.boxes.shown.isEmpty());
    // Over a read-only earlier export the write fails silently and the next curve is asked.
    rig.window.PatientList_ItemCheck(2, false);
    rig.boxes.type(QStringLiteral("0"));
    rig.boxes.type(QStringLiteral("2"));
    rig.dialogs.save_as(rig.out("first.dat"));
    rig.window.mnuExport_Click();
    EXPECT_EQ(rig.lines(rig.out("first.dat")).size(), 6 + 51 + 1);
    EXPECT_TRUE(rig.boxes.shown.isEmpty());
}

}  // namespace
}  // namespace zel::test
