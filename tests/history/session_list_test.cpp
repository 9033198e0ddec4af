// The session history window: its rows and columns from the patient's "session.ini", the
// empty list of a patient without one, the layout on resize, and the menu that opens it.
#include <gtest/gtest.h>

#include "data/session_history_file.h"
#include "history_rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

using Row = std::vector<QString>;

const StoredSession morning{" 1", "04-Mar-26 at 09:05:07", "1.2", " 15", "Inhale", " 2", "Manual"};

TEST(SessionList, shows_each_session_as_stored_in_file_order) {
    HistoryRig rig;
    rig.write_history(
        3, {
               morning,
               // Saved under another language: its trigger word stays.
               {" 2", "05-Mar-26 at 14:30:00", "1.5", " 20", "Einatmen", " 0", "Automated"},
               {"Evening", "05-Mar-26 at 18:00:59", "0.8", " 9", "Exhale", " 12", "Manual Overide"},
           });
    rig.history.Form_Load();
    const std::vector<Row> expected = {
        {"1", "04-Mar-26 at 09:05:07", "1.2", "15", "Inhale", "2", "Manual"},
        {"2", "05-Mar-26 at 14:30:00", "1.5", "20", "Einatmen", "0", "Automated"},
        {"Evening", "05-Mar-26 at 18:00:59", "0.8", "9", "Exhale", "12", "Manual Overide"},
    };
    EXPECT_EQ(rig.rows(), expected);
    EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty());
}

TEST(SessionList, has_the_seven_columns_in_order_with_their_widths) {
    HistoryRig rig;
    rig.write_history(1, {morning});
    rig.history.Form_Load();
    struct Column {
        const char* text;
        double width;
    };
    const double fallback = ReportListView::default_column_width;
    const Column expected[] = {
        {"Session", fallback},
        {"Date and Time                      ", 2400},
        {"Threshold (liters)", fallback},
        {"Breath Hold (sec)", 1800},
        {"Trigger Mode", fallback},
        {"Breath Holds", fallback},
        {"Gating Mode", 2000},
    };
    const auto& columns = rig.history.ListView1.columns;
    ASSERT_EQ(columns.size(), std::size(expected));
    for (size_t k = 0; k < columns.size(); ++k) {
        EXPECT_EQ(columns[k].text, QString::fromLatin1(expected[k].text)) << k;
        EXPECT_EQ(columns[k].width, expected[k].width) << k;
    }
}

TEST(SessionList, missing_sections_and_keys_give_empty_cells) {
    HistoryRig rig;
    StoredSession partial = morning;
    partial.gating_mode = QByteArray();  // written before the key existed
    partial.threshold = QByteArray();
    // The count was edited by hand: two sessions more than the file holds.
    rig.write_history(3, {partial});
    rig.history.Form_Load();
    const std::vector<Row> expected = {
        {"1", "04-Mar-26 at 09:05:07", "", "15", "Inhale", "2", ""},
        {"", "", "", "", "", "", ""},
        {"", "", "", "", "", "", ""},
    };
    EXPECT_EQ(rig.rows(), expected);
    EXPECT_EQ(rig.history.ListView1.column_count(), 7);
    EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty());
}

// Found by fuzzing: a file of one section whose count says 32767 kept the window reading the
// file once for every value, 229,369 times, for longer than the fuzzer's ten seconds.
TEST(SessionList, a_count_far_beyond_its_sections_lists_every_row_from_one_read) {
    HistoryRig rig;
    rig.write_history(32767, {morning});
    rig.history.Form_Load();
    ASSERT_EQ(rig.history.ListView1.item_count(), 32767);
    const std::vector<Row> rows = rig.rows();
    EXPECT_EQ(rows.front(),
              (Row{"1", "04-Mar-26 at 09:05:07", "1.2", "15", "Inhale", "2", "Manual"}));
    EXPECT_EQ(rows.back(), Row(7));
    EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty());
}

TEST(SessionList, without_sessions_stays_empty_without_headings_or_message) {
    struct Case {
        const char* what;
        QByteArray file;  // null: no file at all
    };
    const Case cases[] = {
        {"no file", QByteArray()},
        {"no header", "[" + session_section(1).toLatin1() + "]\r\nID= 1\r\n"},
        {"a count of 0", "[HEADER]\r\nTOTAL_SESSIONS= 0\r\n"},
        {"an empty count", "[HEADER]\r\nTOTAL_SESSIONS=\r\n"},
        {"a count that is no number", "[HEADER]\r\nTOTAL_SESSIONS=many\r\n"},
        {"a count beyond 16 bits", "[HEADER]\r\nTOTAL_SESSIONS= 40000\r\n"},
    };
    for (const Case& c : cases) {
        HistoryRig rig;
        if (!c.file.isNull()) rig.write_file(c.file);
        rig.history.Form_Load();
        EXPECT_EQ(rig.history.ListView1.item_count(), 0) << c.what;
        EXPECT_EQ(rig.history.ListView1.column_count(), 0) << c.what;
        EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty()) << c.what;
    }
}

TEST(SessionList, reads_the_file_of_the_patient_in_force) {
    HistoryRig rig;
    rig.write_history(1, {morning});
    rig.form.patient_medical_id = QStringLiteral("B2");  // another patient, without a history
    rig.history.Form_Load();
    EXPECT_EQ(rig.history.ListView1.item_count(), 0);
}

TEST(SessionList, captions_come_from_the_catalogue_and_done_unloads) {
    HistoryRig rig;
    rig.history.Form_Load();
    EXPECT_EQ(rig.history.Caption, QStringLiteral("Session History"));
    EXPECT_EQ(rig.history.LabelSession.Caption, QStringLiteral("Session History"));
    EXPECT_EQ(rig.history.DoneButton.Caption, QStringLiteral("Done"));
    EXPECT_EQ(rig.history.cmdPrint.Caption, QStringLiteral("Print"));
    EXPECT_FALSE(rig.history.unloaded);
    rig.history.DoneButton_Click();
    EXPECT_TRUE(rig.history.unloaded);
}

TEST(SessionList, controls_grow_with_the_window_in_proportion) {
    struct Case {
        double width_factor, height_factor;
        bool minimized;
    };
    const Case cases[] = {
        {2.0, 1.5, false}, {0.5, 0.75, false}, {1.0, 1.0, false}, {0.1, 0.1, true}};
    for (const Case& c : cases) {
        HistoryRig rig;
        DialogSessionHistory& h = rig.history;
        h.Form_Load();
        const Control designed = h.ListView1;
        const Control done = h.DoneButton;
        const double font_size = h.LabelSession.font.size;
        h.ScaleWidth *= c.width_factor;
        h.ScaleHeight *= c.height_factor;
        h.minimized = c.minimized;
        h.Form_Resize();
        const double xs = c.minimized ? 1.0 : c.width_factor;
        const double ys = c.minimized ? 1.0 : c.height_factor;
        EXPECT_DOUBLE_EQ(h.ListView1.Left, designed.Left * xs) << c.width_factor;
        EXPECT_DOUBLE_EQ(h.ListView1.Top, designed.Top * ys) << c.width_factor;
        EXPECT_DOUBLE_EQ(h.ListView1.Width, designed.Width * xs) << c.width_factor;
        EXPECT_DOUBLE_EQ(h.ListView1.Height, designed.Height * ys) << c.width_factor;
        EXPECT_DOUBLE_EQ(h.DoneButton.Left, done.Left * xs) << c.width_factor;
        EXPECT_DOUBLE_EQ(h.DoneButton.Top, done.Top * ys) << c.width_factor;
        EXPECT_EQ(h.LabelSession.font.size, font_size);
    }
}

TEST(SessionHistoryMenu, opens_the_window_modally_in_every_balloon_state) {
    for (int16_t state : {0, 1, 2, 4, 5}) {
        HistoryRig rig;
        rig.form.b_state = state;
        rig.form.mnuSessionHistory_Click();
        EXPECT_EQ(rig.fakes.windows.log, QStringList{QStringLiteral("show DialogSessionHistory")})
            << state;
    }
}

}  // namespace
}  // namespace zel::test
