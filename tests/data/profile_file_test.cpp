#include "data/profile_file.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "data/profile_edit.h"

namespace zel {
namespace {

TEST(ProfileRead, finds_values_as_the_profile_functions_do) {
    const QByteArray file =
        "stray=before any section\r\n"
        "[ZEL]\r\n"
        "DataPath=/srv/zel data\r\n"
        "  Spaced Key  =   padded value \t\r\n"
        "Quoted=\" 7 \"\r\n"
        "Single='x'\r\n"
        "Half=\"x\r\n"
        "Empty=\r\n"
        "no equals sign\r\n"
        "Twice=first\r\n"
        "Twice=second\r\n"
        "[Z\xC9L]\r\n"
        "\xC9t\xC9=Latin-1 names\r\n"
        "[zel]\r\n"
        "Later=a second section of the name is never read\r\n"
        "[other]\n"
        "DataPath=/elsewhere\n"
        "Last=no line end";
    struct Case {
        const char* section;
        const char* key;
        const char* expected;
    };
    const Case cases[] = {
        {"ZEL", "DataPath", "/srv/zel data"},
        {"zel", "DATAPATH", "/srv/zel data"},
        {" ZEL ", "DataPath", "/srv/zel data"},
        {"ZEL", "Spaced Key", "padded value"},
        {"ZEL", "Quoted", " 7 "},
        {"ZEL", "Single", "x"},
        {"ZEL", "Half", "\"x"},
        {"ZEL", "Empty", ""},
        {"ZEL", "no equals sign", "default"},
        {"ZEL", "Twice", "first"},
        {"ZEL", "stray", "default"},
        {"ZEL", "Last", "default"},
        {"other", "DataPath", "/elsewhere"},
        {"other", "Last", "no line end"},
        {"missing", "DataPath", "default"},
        {"z\xE9l", "\xE9T\xE9", "Latin-1 names"},
        {"ZEL", "Later", "default"},
    };
    // Found by fuzzing: the history window read the whole file again for every value. The
    // index it now reads from once gives every value as the single read does.
    const ProfileIndex index(file);
    for (const auto& c : cases) {
        const QString section = QString::fromLatin1(c.section), key = QString::fromLatin1(c.key);
        EXPECT_EQ(profile_value(file, section, key, QStringLiteral("default")),
                  QString::fromLatin1(c.expected))
            << c.section << "/" << c.key;
        EXPECT_EQ(index.value(section, key, QStringLiteral("default")),
                  QString::fromLatin1(c.expected))
            << "index " << c.section << "/" << c.key;
    }
    EXPECT_EQ(index.value(QStringLiteral("ZEL"), QStringLiteral("DataPath"), {}, 5),
              QStringLiteral("/srv"));
}

TEST(ProfileRead, cuts_a_value_at_the_buffer_less_its_nul) {
    const QByteArray value(300, 'v');
    const QByteArray file = "[ZEL]\r\nDataPath=" + value + "\r\n";
    EXPECT_EQ(profile_value(file, "ZEL", "DataPath", {}).size(), 255);
    EXPECT_EQ(profile_value(file, "ZEL", "DataPath", {}, 10), QString(9, QLatin1Char('v')));
    EXPECT_EQ(profile_value("[ZEL]\r\nDataPath=\xE9t\xE9\r\n", "ZEL", "DataPath", {}),
              QString::fromUtf8("\xC3\xA9t\xC3\xA9"))
        << "Latin-1 text";
}

// Each edit keeps every byte it doesn't touch, odd line ends and blanks included.
TEST(ProfileWrite, changes_only_the_lines_it_must) {
    const QByteArray base =
        "; kept comment\r\n"
        "[HEADER]\r\n"
        "TOTAL_SESSIONS= 1\r\n"
        "\r\n"
        "[Session1]\n"
        "ID = 7   \n"
        "Date=today\r\n"
        "\r\n";
    struct Case {
        const char* name;
        const char* section;
        const char* key;    // null: delete the section
        const char* value;  // null: delete the key
        QByteArray expected;
    };
    const Case cases[] = {
        {"replace in place", "header", "total_sessions", " 2",
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 2\r\n\r\n[Session1]\nID = 7   \n"
         "Date=today\r\n\r\n"},
        {"replace keeps the line's own end", "Session1", "ID", " 8",
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\n\r\n[Session1]\nID = 8\n"
         "Date=today\r\n\r\n"},
        {"new key behind the section's last line", "HEADER", "Extra", "x",
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\nExtra=x\r\n\r\n[Session1]\n"
         "ID = 7   \nDate=today\r\n\r\n"},
        {"new key in the last section", "Session1", "Gating Mode", "Manual",
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\n\r\n[Session1]\nID = 7   \n"
         "Date=today\r\nGating Mode=Manual\r\n\r\n"},
        {"new section at the end", "Session2", "ID", " 9",
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\n\r\n[Session1]\nID = 7   \n"
         "Date=today\r\n\r\n[Session2]\r\nID= 9\r\n"},
        {"delete a section", "SESSION1", nullptr, nullptr,
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\n\r\n"},
        {"delete a key", "Session1", "date", nullptr,
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\n\r\n[Session1]\nID = 7   \n"
         "\r\n"},
        {"delete what isn't there", "Session9", nullptr, nullptr, base},
    };
    for (const auto& c : cases) {
        QByteArray contents = base;
        ASSERT_TRUE(test::edit(contents, c.section, c.key, c.value)) << c.name;
        EXPECT_EQ(contents, c.expected) << c.name;
    }
}

TEST(ProfileWrite, ends_an_unfinished_last_line_it_adds_behind_or_replaces) {
    struct Case {
        QByteArray before;
        const char* section;
        QByteArray expected;
    };
    const Case cases[] = {
        {"", "ZEL", "[ZEL]\r\nDataPath=/d\r\n"},
        {"[ZEL]", "ZEL", "[ZEL]\r\nDataPath=/d\r\n"},
        {"[A]\r\nk=v", "ZEL", "[A]\r\nk=v\r\n[ZEL]\r\nDataPath=/d\r\n"},
        {"[ZEL]\r\nk=v", "ZEL", "[ZEL]\r\nk=v\r\nDataPath=/d\r\n"},
        {"[ZEL]\r\nDataPath=/old", "ZEL", "[ZEL]\r\nDataPath=/d\r\n"},
    };
    const QString key = QStringLiteral("DataPath"), value = QStringLiteral("/d");
    for (const auto& c : cases) {
        QByteArray contents = c.before;
        ASSERT_TRUE(edit_profile(contents, c.section, &key, &value));
        EXPECT_EQ(contents, c.expected) << c.before.toStdString();
    }
}

TEST(ProfileWrite, refuses_what_would_not_read_back) {
    struct Case {
        const char* section;
        QString key;
        QString value;
    };
    const Case cases[] = {
        {"ZEL", QStringLiteral("DataPath"), QStringLiteral("/a\nb")},
        {"ZEL", QStringLiteral("DataPath"), QStringLiteral("/a\rb")},
        {"ZEL", QStringLiteral("Data=Path"), QStringLiteral("/a")},
        {"ZEL", QStringLiteral(" ;DataPath"), QStringLiteral("/a")},
        {"ZEL", QStringLiteral("[DataPath]"), QStringLiteral("/a")},
        {"Z\nEL", QStringLiteral("DataPath"), QStringLiteral("/a")},
        {"ZEL", QStringLiteral("DataPath"), QString::fromUtf8("/\xC5\x81\xC3\xB3\x64\xC5\xBA")},
    };
    for (const auto& c : cases) {
        QByteArray contents = "[ZEL]\r\nDataPath=/old\r\n";
        EXPECT_FALSE(edit_profile(contents, c.section, &c.key, &c.value)) << c.value.toStdString();
        EXPECT_EQ(contents, QByteArray("[ZEL]\r\nDataPath=/old\r\n"));
    }
}

class ProfileFiles : public ::testing::Test {
  protected:
    QByteArray contents(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<absent>");
    }
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("session.ini"));
};

TEST_F(ProfileFiles, a_missing_file_gives_the_default_and_a_write_creates_it) {
    EXPECT_EQ(read_profile_string(path, "HEADER", "TOTAL_SESSIONS", "none"), "none");
    EXPECT_EQ(contents(path), "<absent>") << "reading creates nothing";

    const char* keys[][2] = {{"ID", " 7"}, {"Date", "22/11/2026 at 09:05:07"}};
    for (const auto& kv : keys)
        ASSERT_TRUE(write_profile_string(path, "SESSION1", kv[0], QString::fromLatin1(kv[1])));
    ASSERT_TRUE(write_profile_string(path, "HEADER", "TOTAL_SESSIONS", " 1"));
    EXPECT_EQ(contents(path),
              "[SESSION1]\r\nID= 7\r\nDate=22/11/2026 at 09:05:07\r\n[HEADER]\r\n"
              "TOTAL_SESSIONS= 1\r\n");
    EXPECT_EQ(read_profile_string(path, "session1", "id", {}), "7");
}

TEST_F(ProfileFiles, a_write_fails_where_the_file_cannot_be_replaced) {
    ASSERT_TRUE(write_profile_string(path, "ZEL", "DataPath", "/a"));
    QFile::setPermissions(path, QFileDevice::ReadOwner);
    EXPECT_FALSE(write_profile_string(path, "ZEL", "DataPath", "/b"));
    EXPECT_EQ(read_profile_string(path, "ZEL", "DataPath", {}), "/a");

    EXPECT_FALSE(write_profile_string(dir.filePath("no/such/dir.ini"), "ZEL", "DataPath", "/a"));
    QDir(dir.path()).mkdir("a_folder");
    EXPECT_FALSE(write_profile_string(dir.filePath("a_folder"), "ZEL", "DataPath", "/a"));
    EXPECT_EQ(read_profile_string(dir.filePath("a_folder"), "ZEL", "DataPath", "d"), "d");
}

}  // namespace
}  // namespace zel
