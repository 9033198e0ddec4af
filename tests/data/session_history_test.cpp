// The session history: entries added and replaced, the next suggestion and the duplicate test,
// and the file left whole when a write fails.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "data/profile_file.h"
#include "data/session_history_file.h"
#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

struct HistoryRig : Rig {
    HistoryRig() {
        form.data_directory = app_data.path();
        form.patient_last_name = QStringLiteral("Doe");
        form.patient_first_name = QStringLiteral("Jane");
        form.patient_medical_id = QStringLiteral("A1");
        QDir().mkpath(app_data.path() + QStringLiteral("/Doe_Jane_A1"));
        form.thresh = 1.2f;
        form.duration = 15;
        form.inhale = true;
        form.breath_holds = 3;
        form.gating_start_mode = message_text(269);
        fakes.clock.when = QDateTime(QDate(2026, 3, 4), QTime(9, 5, 7));
    }
    QString path() const { return app_data.path() + QStringLiteral("/Doe_Jane_A1/session.ini"); }
    QByteArray contents() const {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void save(const QString& session) {
        form.session = session;
        form.save_session();
    }
};

TEST(SessionHistory, the_first_save_makes_the_file_with_its_header_and_entry) {
    HistoryRig rig;
    EXPECT_EQ(read_total_sessions(rig.path()), 0);
    rig.save(QStringLiteral("7"));
    const QByteArray expected =
        "[" + session_section(1).toLatin1() +
        "]\r\nID= 7\r\nDate=" + rig.fakes.locale.medium_date(QDate(2026, 3, 4)).toLatin1() +
        " at " + rig.fakes.locale.medium_time(QTime(9, 5, 7)).toLatin1() +
        "\r\nThreshold=1.2\r\nBreath_Hold_Duration= 15\r\nTrigger_on_Inhale=Inhale\r\n"
        "Number_of_breath_holds= 3\r\nGating Mode=Manual\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\n";
    EXPECT_EQ(rig.contents(), expected);
    EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty());
    EXPECT_EQ(rig.form.session_id_saved, rig.path() + QStringLiteral("7"));
}

// The history keeps one decimal, and a threshold exactly between two shows the even one.
TEST(SessionHistory, the_threshold_keeps_one_decimal_with_ties_to_the_even_digit) {
    struct Case {
        float thresh;
        const char* dot;
        const char* comma;
    };
    const Case cases[] = {{1.25f, "1.2", "1,2"},   {1.35f, "1.4", "1,4"},  {-1.25f, "-1.2", "-1,2"},
                          {1.26f, "1.3", "1,3"},   {0.05f, "0.0", "0,0"},  {0.15f, "0.2", "0,2"},
                          {10.0f, "10.0", "10,0"}, {-0.04f, "0.0", "0,0"}, {2.75f, "2.8", "2,8"}};
    for (const auto& c : cases) {
        for (const QChar separator : {QLatin1Char('.'), QLatin1Char(',')}) {
            HistoryRig rig;
            rig.fakes.locale.separator = separator;
            rig.form.thresh = c.thresh;
            rig.save(QStringLiteral("1"));
            EXPECT_EQ(read_profile_string(rig.path(), session_section(1),
                                          QStringLiteral("Threshold"), {}),
                      QLatin1String(separator == QLatin1Char('.') ? c.dot : c.comma))
                << c.thresh;
        }
    }
}

TEST(SessionHistory, a_second_save_of_a_session_replaces_its_entry) {
    HistoryRig rig;
    rig.save(QStringLiteral("1"));
    rig.form.breath_holds = 5;
    rig.save(QStringLiteral("1"));
    EXPECT_EQ(read_total_sessions(rig.path()), 1);
    EXPECT_EQ(read_profile_string(rig.path(), session_section(1),
                                  QStringLiteral("Number_of_breath_holds"), {}),
              QStringLiteral("5"));
    rig.save(QStringLiteral("Evening"));
    EXPECT_EQ(read_total_sessions(rig.path()), 2);
    EXPECT_EQ(read_session_id(rig.path(), 2), QStringLiteral("Evening"));
    EXPECT_EQ(read_session_id(rig.path(), 1), QStringLiteral("1"));
}

TEST(SessionHistory, a_failed_write_takes_its_section_out_and_is_reported) {
    HistoryRig rig;
    rig.save(QStringLiteral("1"));
    const QByteArray before = rig.contents();
    // The last key can't be written: a line break would not read back.
    rig.form.gating_start_mode = QStringLiteral("Auto\nmated");
    rig.save(QStringLiteral("2"));
    EXPECT_EQ(rig.contents(), before);
    EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(101)});

    // No folder at all.
    HistoryRig gone;
    gone.form.patient_last_name = QStringLiteral("Nobody");
    gone.save(QStringLiteral("1"));
    EXPECT_EQ(gone.fakes.boxes.shown, QStringList{message_text(101)});
    EXPECT_TRUE(gone.form.session_id_saved.isEmpty());
}

// Found by fuzzing: at a count of 32767 the save wrote 32768, which no read takes, and the
// whole history seemed gone.
TEST(SessionHistory, a_save_beyond_the_largest_count_is_refused_and_the_history_stays) {
    HistoryRig rig;
    rig.save(QStringLiteral("1"));
    ASSERT_TRUE(write_profile_string(rig.path(), QStringLiteral("HEADER"),
                                     QStringLiteral("TOTAL_SESSIONS"), QStringLiteral(" 32767")));
    const QByteArray before = rig.contents();
    rig.save(QStringLiteral("2"));
    EXPECT_EQ(rig.contents(), before);
    EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(101)});
    EXPECT_EQ(read_total_sessions(rig.path()), 32767);
    EXPECT_EQ(read_session_id(rig.path(), 1), QStringLiteral("1"));
}

TEST(SessionHistory, the_next_suggestion_follows_the_last_entry) {
    struct Case { const char* last_id; const char* next; };
    const Case cases[] = {{nullptr, "1"}, {"7", "8"}, {"Test", "Test"}, {"  41 ", "42"}};
    for (const auto& c : cases) {
        HistoryRig rig;
        if (c.last_id) rig.save(QString::fromLatin1(c.last_id));
        EXPECT_EQ(rig.form.get_next_sessionID(QStringLiteral("Doe"), QStringLiteral("Jane"),
                                              QStringLiteral("A1")),
                  QString::fromLatin1(c.next))
            << (c.last_id ? c.last_id : "none");
        EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty());
    }
}

TEST(SessionHistory, the_duplicate_test_compares_the_stored_ids_exactly) {
    HistoryRig rig;
    EXPECT_FALSE(rig.form.checkIfSessionExists(QStringLiteral("1")));
    rig.save(QStringLiteral("7"));
    rig.save(QStringLiteral("Test"));
    EXPECT_TRUE(rig.form.checkIfSessionExists(QStringLiteral("7")));
    EXPECT_TRUE(rig.form.checkIfSessionExists(QStringLiteral("Test")));
    EXPECT_FALSE(rig.form.checkIfSessionExists(QStringLiteral("test")));
    EXPECT_FALSE(rig.form.checkIfSessionExists(QStringLiteral("8")));
}

TEST(SessionHistory, a_count_beyond_the_sections_is_reported_and_the_search_goes_on) {
    HistoryRig rig;
    rig.save(QStringLiteral("7"));
    ASSERT_TRUE(write_profile_string(rig.path(), QStringLiteral("HEADER"),
                                     QStringLiteral("TOTAL_SESSIONS"), QStringLiteral(" 3")));
    EXPECT_TRUE(rig.form.get_next_sessionID(QStringLiteral("Doe"), QStringLiteral("Jane"),
                                            QStringLiteral("A1"))
                    .isEmpty());
    EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(102)});
    EXPECT_EQ(rig.fakes.boxes.styles, std::vector<int>{vbCritical});
    // Sections 2 and 3 are missing: two reports, and the one that exists is still found.
    EXPECT_FALSE(rig.form.checkIfSessionExists(QStringLiteral("9")));
    EXPECT_EQ(rig.fakes.boxes.shown.size(), 3);
    EXPECT_TRUE(rig.form.checkIfSessionExists(QStringLiteral("7")));
}

}  // namespace
}  // namespace zel::test
