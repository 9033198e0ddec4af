// Choosing and reading curve files: the limit of five, bad files and the list of curves.
#include <gtest/gtest.h>

#include <QElapsedTimer>

#include "review/review_rig.h"

namespace zel::test {
namespace {

// What a window holding no curve shows: after a cancelled dialog, and after a clear.
void expect_empty(const PatientCurves& w) {
    EXPECT_EQ(w.curve_count, 0);
    EXPECT_FALSE(w.mnuClearPlot.Enabled || w.mnuExport.Enabled || w.comboAlign.Enabled);
    EXPECT_TRUE(w.PatientList.items.empty());
    EXPECT_EQ(w.NTGraph1.element_count(), 0);
    EXPECT_EQ(w.NTGraph1.range(), (ChartRange{0, 1, -2, 2}));
    EXPECT_EQ(w.default_rate, 1.0);
}

TEST(CurveLoading, opens_on_its_dialog_keeps_check_marks_through_an_import_and_clears) {
    ReviewRig rig;
    PatientCurves& w = rig.window;
    EXPECT_EQ((QStringList{rig.dialogs.titles.back(), rig.dialogs.filters.back(),
                           rig.dialogs.opened_in.back(), w.Caption}),
              (QStringList{"Load Patient Curves", "Patient Curve Files (*.dat)|*.dat",
                           rig.folder.path(), "Patient Respiratory Curve(s) View Window"}));
    expect_empty(w);
    EXPECT_TRUE(rig.boxes.shown.empty());
    const QString a = rig.write_curve(QStringLiteral("a.dat"), breathing_with_holds(2), 1.2, 25);
    const QString b = rig.write_curve(QStringLiteral("b.dat"), breathing_with_holds(3));
    rig.open_on({a});
    w.PatientList_ItemCheck(1, false);
    EXPECT_EQ(w.visible_count, 0);
    rig.import({b});
    // One file chosen on its own is stored as it stands; the first curve's rate is the window's.
    EXPECT_EQ(w.curve_paths, (std::vector<QString>{a, b}));
    EXPECT_EQ(w.default_rate, 25.0);
    ASSERT_EQ(w.PatientList.items.size(), 2u);
    EXPECT_FALSE(w.PatientList.items[0].checked);
    EXPECT_TRUE(w.PatientList.items[1].checked);
    EXPECT_EQ(w.PatientList.items[1].image, 2);
    // The unchecked curve was read again and stays hidden.
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
        for (int k = 0; k < c.loaded; ++k)
            first.append(rig.write_curve(QStringLiteral("a%1.dat").arg(k), samples_of("1111")));
        for (int k = 0; k < c.chosen; ++k)
            more.append(rig.write_curve(QStringLiteral("b%1.dat").arg(k), samples_of("1111")));
        if (!first.isEmpty()) rig.open_on(first);
        const qsizetype dialogs = rig.dialogs.titles.size();
        if (c.straight) {
            rig.window.Form_Unload();
            rig.window.Form_Load(more);
        } else {
            rig.import(more);
        }
        EXPECT_EQ(rig.dialogs.titles.size(), dialogs + !c.straight);
        const QStringList kept = c.straight ? more.mid(0, 5) : c.refused ? first : first + more;
        EXPECT_EQ(rig.window.curve_paths, std::vector<QString>(kept.begin(), kept.end()));
        EXPECT_EQ(rig.window.curve_count, kept.size());
        // Every per-curve array holds exactly the loaded curves.
        EXPECT_EQ(rig.window.curve_info.size(), size_t(kept.size()));
        EXPECT_EQ(rig.boxes.shown, c.refused ? QStringList{"You have exceeded the limit on the "
                                                           "number of curves that can be imported."}
                                             : QStringList());
    }
}

TEST(CurveLoading, a_bad_file_stops_the_import_there_with_one_message) {
    // How each kind of bad file fails is the reader's; here a bad file in the reading, one
    // that is gone, and a curve whose look changes at every sample, which runs out of element
    // numbers: each stops the import quickly, with the same message.
    std::string alternating;
    for (int i = 0; i < 40000; ++i) alternating += i % 2 ? '0' : '1';
    struct Case { const char* name; QByteArray text; };
    const Case cases[] = {
        {"another first line", "CURVE DATA\r\nHeaderStart\r\nHeaderEnd\r\n0.02;1;1;1\r\n"},
        {"volume not a number", curve_text({}) + "0.02;x;1;1\r\n"},
        {"missing on disk", {}},
        {"changes at every sample", curve_text(samples_of(alternating.c_str()))},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ReviewRig rig;
        const QString good = rig.write_curve(QStringLiteral("good.dat"), breathing_with_holds(1));
        const QString bad = c.text.isNull() ? rig.folder.path() + QStringLiteral("/gone.dat")
                                            : rig.write_text(QStringLiteral("bad.dat"), c.text);
        const QString third = rig.write_curve(QStringLiteral("third.dat"), samples_of("111"));
        QElapsedTimer clock;
        clock.start();
        rig.open_on({good, bad, third});
        EXPECT_LT(clock.elapsed(), 2000);
        EXPECT_EQ(rig.boxes.shown, QStringList{"Not all patient curves could be imported because "
                                               "on of the files is invalid. Import halted at " + bad});
        EXPECT_EQ(rig.boxes.styles, std::vector<int>{vbCritical});
        EXPECT_EQ(rig.window.curve_paths, std::vector<QString>{good});
        EXPECT_EQ((std::tuple{rig.window.curve_count, rig.window.curve_time.size(),
                              rig.window.PatientList.items.size()}),
                  (std::tuple{int16_t(1), size_t(1), size_t(1)}));
        EXPECT_EQ(rig.window.PatientList.items[0].text, QStringLiteral("good"));
        EXPECT_TRUE(rig.window.mnuClearPlot.Enabled);
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

}  // namespace
}  // namespace zel::test
