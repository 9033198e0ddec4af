// Choosing and reading curve files: the limit of five, bad files and the list of curves.
#include <gtest/gtest.h>

#include "language/messages.h"
#include "review/review_rig.h"

namespace zel::test {
namespace {

TEST(CurveLoading, the_window_opens_on_its_dialog_and_a_cancel_leaves_it_empty) {
    ReviewRig rig;
    EXPECT_EQ(rig.dialogs.titles.back(), QStringLiteral("Load Patient Curves"));
    EXPECT_EQ(rig.dialogs.filters.back(), QStringLiteral("Patient Curve Files (*.dat)|*.dat"));
    EXPECT_EQ(rig.dialogs.opened_in.back(), rig.folder.path());
    EXPECT_EQ(rig.window.Caption, QStringLiteral("Patient Respiratory Curve(s) View Window"));
    EXPECT_FALSE(rig.window.mnuClearPlot.Enabled);
    EXPECT_FALSE(rig.window.mnuExport.Enabled);
    EXPECT_FALSE(rig.window.comboAlign.Enabled);
    EXPECT_TRUE(rig.window.PatientList.items.empty());
    EXPECT_EQ(rig.window.NTGraph1.range(), (ChartRange{0, 1, -2, 2}));
    EXPECT_TRUE(rig.boxes.shown.empty());
}

TEST(CurveLoading, at_most_five_curves_and_a_refused_choice_changes_nothing) {
    struct Case { int loaded, chosen; bool accepted; };
    const Case cases[] = {{1, 4, true}, {2, 4, false}, {0, 5, true}, {4, 1, true}, {5, 1, false}};
    for (const auto& c : cases) {
        ReviewRig rig;
        QStringList first, more;
        for (int k = 0; k < c.loaded; ++k)
            first.append(rig.write_curve(QStringLiteral("a%1.dat").arg(k), samples_of("1111")));
        for (int k = 0; k < c.chosen; ++k)
            more.append(rig.write_curve(QStringLiteral("b%1.dat").arg(k), samples_of("1111")));
        if (!first.isEmpty()) rig.open_on(first);
        rig.import(more);
        EXPECT_EQ(rig.window.curve_count, c.accepted ? c.loaded + c.chosen : c.loaded) << c.loaded;
        EXPECT_EQ(rig.boxes.shown,
                  c.accepted ? QStringList()
                             : QStringList{QStringLiteral("You have exceeded the limit on the "
                                                          "number of curves that can be imported.")})
            << c.loaded;
    }
}

TEST(CurveLoading, a_bad_file_stops_the_import_there_with_one_message) {
    const QByteArray header =
        "CURVE_DATA_FILE_STAMP\r\nHeaderStart\r\nThreshold:1.2\r\nCount Frequency: 50\r\nHeaderEnd\r\n";
    struct Case { const char* name; QByteArray text; };
    const Case cases[] = {
        {"another first line", "CURVE DATA\r\nHeaderStart\r\nHeaderEnd\r\n0.02;1;1;1\r\n"},
        {"no HeaderEnd", "CURVE_DATA_FILE_STAMP\r\nHeaderStart\r\nT:1\r\nC:50\r\n0.02;1;1;1\r\n"},
        {"frame rate 0", "CURVE_DATA_FILE_STAMP\r\nHeaderStart\r\nT:1\r\nC: 0\r\nHeaderEnd\r\n0.02;1;1;1\r\n"},
        {"three fields", header + "0.02;1;1;1\r\n0.04;1;1\r\n"},
        {"volume not a number", header + "0.02;x;1;1\r\n"},
        {"balloon above a byte", header + "0.02;1;256;1\r\n"},
        {"no samples", header},
        {"missing on disk", {}},
    };
    for (const auto& c : cases) {
        ReviewRig rig;
        const QString good = rig.write_curve(QStringLiteral("good.dat"), breathing_with_holds(1));
        const QString bad = c.text.isNull() ? rig.folder.path() + QStringLiteral("/gone.dat")
                                            : rig.write_text(QStringLiteral("bad.dat"), c.text);
        const QString third = rig.write_curve(QStringLiteral("third.dat"), samples_of("111"));
        rig.open_on({good, bad, third});
        ASSERT_EQ(rig.boxes.shown.size(), 1) << c.name;
        EXPECT_EQ(rig.boxes.shown[0],
                  QStringLiteral("Not all patient curves could be imported because on of the "
                                 "files is invalid. Import halted at ") + bad)
            << c.name;
        EXPECT_EQ(rig.boxes.styles[0], vbCritical) << c.name;
        EXPECT_EQ(rig.window.curve_count, 1) << c.name;
        EXPECT_EQ(rig.window.curve_paths, std::vector<QString>{good}) << c.name;
        ASSERT_EQ(rig.window.PatientList.items.size(), 1u) << c.name;
        EXPECT_EQ(rig.window.PatientList.items[0].text, QStringLiteral("good")) << c.name;
        EXPECT_EQ(rig.window.curve_time.size(), 1u) << c.name;
        EXPECT_TRUE(rig.window.mnuClearPlot.Enabled) << c.name;
    }
}

TEST(CurveLoading, titles_come_from_the_name_between_the_last_slash_and_dot) {
    struct Case { const char* path; const char* title; };
    const Case cases[] = {
        {"/p/Doe_Jane_A1/Doe_1.dat", "Doe_1"},
        {"/p/Doe_Jane_A1/Doe_1", ""},         // no extension
        {"/p/Doe.Jane/curve", ""},            // the last dot lies in a folder's name
        {"curve.dat", ""},                    // no folder
        {"/p/a.b.dat", "a.b"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(PatientCurves::curve_title_from_path(QString::fromLatin1(c.path)),
                  QString::fromLatin1(c.title)) << c.path;
}

TEST(CurveLoading, check_marks_survive_an_import_and_a_clear_empties_everything) {
    ReviewRig rig;
    const QString a = rig.write_curve(QStringLiteral("a.dat"), breathing_with_holds(2));
    const QString b = rig.write_curve(QStringLiteral("b.dat"), breathing_with_holds(3));
    rig.open_on({a});
    rig.window.PatientList_ItemCheck(1, false);
    EXPECT_EQ(rig.window.visible_count, 0);
    rig.import({b});
    ASSERT_EQ(rig.window.PatientList.items.size(), 2u);
    EXPECT_FALSE(rig.window.PatientList.items[0].checked);
    EXPECT_TRUE(rig.window.PatientList.items[1].checked);
    EXPECT_EQ(rig.window.PatientList.items[1].image, 2);
    // The unchecked curve was read again and stays hidden.
    const CurveInfo& first = rig.window.curve_info[0];
    EXPECT_FALSE(rig.window.NTGraph1.element(first.first_element + 3)->show);
    EXPECT_TRUE(rig.window.NTGraph1.element(first.first_element + first.element_count + 3)->show);
    // One file chosen on its own is stored as it stands.
    EXPECT_EQ(rig.window.curve_paths[1], b);
    rig.window.mnuClearPlot_Click();
    EXPECT_EQ(rig.window.curve_count, 0);
    EXPECT_TRUE(rig.window.PatientList.items.empty());
    EXPECT_FALSE(rig.window.mnuClearPlot.Enabled);
    EXPECT_EQ(rig.window.NTGraph1.element_count(), 0);
    EXPECT_EQ(rig.window.default_rate, 1.0);
}

TEST(CurveLoading, opened_straight_on_files_it_takes_the_first_five_without_a_dialog) {
    ReviewRig rig;
    const int dialogs_before = static_cast<int>(rig.dialogs.titles.size());
    QStringList paths;
    for (int k = 0; k < 6; ++k)
        paths.append(rig.write_curve(QStringLiteral("c%1.dat").arg(k), samples_of("1111")));
    rig.window.Form_Unload();
    rig.window.Form_Load(paths);
    EXPECT_EQ(rig.dialogs.titles.size(), dialogs_before);
    EXPECT_EQ(rig.window.curve_count, 5);
    EXPECT_EQ(rig.window.PatientList.items.back().text, QStringLiteral("c4"));
    EXPECT_EQ(rig.boxes.shown, QStringList{message_text(169)});
    EXPECT_EQ(rig.window.Caption, QStringLiteral("Patient Respiratory Curve(s) View Window"));
}

}  // namespace
}  // namespace zel::test
