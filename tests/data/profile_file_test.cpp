// Profile files read and edited as Windows does with the same file and the same calls: sites
// bring session histories that Windows wrote and people edited by hand.
#include "data/profile_file.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace zel {
namespace {

TEST(ProfileRead, finds_values_as_the_profile_functions_do) {
    const QByteArray file =
        "stray=before any section\r\n[ZEL]\r\nDataPath=/srv/zel data\r\n"
        "  Spaced Key  =   padded value \t\r\nQuoted=\" 7 \"\r\nSingle='x'\r\nHalf=\"x\r\n"
        "Empty=\r\nno equals sign\r\nTwice=first\r\nTwice=second\r\n"
        "[Z\xC9L]\r\n\xC9t\xC9=Latin-1 names\r\n[zel]\r\nLater=a second section is never read\r\n"
        "[\t Tabbed\t]\r\nk=tab\r\n[CR]\rk=1\rm=2\r[Notes]\r\n;k=commented\r\n  ; m = also\r\n"
        "[other]\nDataPath=/elsewhere\nLast=no line end";
    struct Case {
        const char *section, *key, *default_value, *expected;
    };
    const Case cases[] = {
        {"ZEL", "DataPath", "-", "/srv/zel data"},
        {"zel", "DATAPATH", "-", "/srv/zel data"},
        {"  ZEL ", " DataPath  ", "-", "/srv/zel data"},
        {"\tZEL", "DataPath", "-", "-"},  // a tab is part of a looked-up name
        {"ZEL", "Spaced Key", "-", "padded value"},
        {"ZEL", "Quoted", "-", " 7 "},
        {"ZEL", "Single", "-", "x"},
        {"ZEL", "Half", "-", "\"x"},
        {"ZEL", "Empty", "-", ""},
        {"ZEL", "no equals sign", "-", "-"},
        {"ZEL", "Twice", "-", "first"},
        {"ZEL", "stray", "-", "-"},
        {"ZEL", "Last", "-", "-"},
        {"ZEL", "Later", "-", "-"},
        {"other", "DataPath", "-", "/elsewhere"},
        {"other", "Last", "-", "no line end"},
        {"missing", "DataPath", "-", "-"},
        {"z\xE9l", "\xE9T\xE9", "-", "Latin-1 names"},
        // Blanks and tabs inside the file's brackets are not part of the name.
        {"Tabbed", "k", "-", "tab"},
        {"\tTabbed", "k", "-", "-"},
        {"CR", "m", "-", "2"},  // a lone CR ends a line
        {"Notes", ";k", "-", "-"},
        {"Notes", "; m", "-", "-"},
        {"ZEL", "none", "default  ", "default"},
        {"ZEL", "none", "  d \t ", "  d \t"},
    };
    // Found by fuzzing: the history window read the whole file again for every value. The
    // index it now reads from once gives every value as the single read does.
    const ProfileIndex index(file);
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.section) + "/" + c.key);
        const QString section = QString::fromLatin1(c.section), key = QString::fromLatin1(c.key);
        const QString fallback = QString::fromLatin1(c.default_value);
        EXPECT_EQ(profile_value(file, section, key, fallback), QString::fromLatin1(c.expected));
        EXPECT_EQ(index.value(section, key, fallback), QString::fromLatin1(c.expected));
    }
    EXPECT_EQ(index.value(QStringLiteral("ZEL"), QStringLiteral("DataPath"), {}, 5), "/srv");
    // A value is cut at the buffer less its NUL.
    const QByteArray value(300, 'v');
    EXPECT_EQ(profile_value("[ZEL]\r\nDataPath=" + value + "\r\n", "ZEL", "DataPath", {}),
              QString(255, QLatin1Char('v')));
    EXPECT_EQ(profile_value("[ZEL]\r\nDataPath=" + value, "ZEL", "DataPath", {}, 10),
              QString(9, QLatin1Char('v')));
    EXPECT_EQ(profile_value("[ZEL]\r\nDataPath=\xE9t\xE9\r\n", "ZEL", "DataPath", {}),
              QString::fromUtf8("\xC3\xA9t\xC3\xA9"));
}

// Each edit keeps every byte it doesn't touch, odd line ends, comments and blanks included.
TEST(ProfileWrite, changes_only_the_lines_it_must) {
    const QByteArray base =
        "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\n\r\n[Session1]\nID = 7   \n"
        "Date=today\r\n\r\n";
    struct Case {
        const char* story;
        QByteArray before;
        const char* section;
        const char* key;    // null: delete the section
        const char* value;  // null: delete the key
        QByteArray after;
    };
    const Case cases[] = {
        {"replace in place", base, "header", "total_sessions", " 2",
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 2\r\n\r\n[Session1]\nID = 7   \n"
         "Date=today\r\n\r\n"},
        {"replace keeps the line's own end", base, "Session1", "ID", " 8",
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\n\r\n[Session1]\nID = 8\n"
         "Date=today\r\n\r\n"},
        {"new key behind the section's last line", base, "HEADER", "Extra", "x",
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\nExtra=x\r\n\r\n[Session1]\n"
         "ID = 7   \nDate=today\r\n\r\n"},
        {"new key in the last section", base, "Session1", "Gating Mode", "Manual",
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\n\r\n[Session1]\nID = 7   \n"
         "Date=today\r\nGating Mode=Manual\r\n\r\n"},
        {"new section at the end", base, "Session2", "ID", " 9",
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\n\r\n[Session1]\nID = 7   \n"
         "Date=today\r\n\r\n[Session2]\r\nID= 9\r\n"},
        {"delete a section", base, "SESSION1", nullptr, nullptr,
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\n\r\n"},
        {"delete a key", base, "Session1", "date", nullptr,
         "; kept comment\r\n[HEADER]\r\nTOTAL_SESSIONS= 1\r\n\r\n[Session1]\nID = 7   \n\r\n"},
        {"delete what isn't there", base, "Session9", nullptr, nullptr, base},
        {"into nothing", "", "ZEL", "DataPath", "/d", "[ZEL]\r\nDataPath=/d\r\n"},
        {"behind an unfinished header", "[ZEL]", "ZEL", "DataPath", "/d",
         "[ZEL]\r\nDataPath=/d\r\n"},
        {"new section behind an unfinished line", "[A]\r\nk=v", "ZEL", "DataPath", "/d",
         "[A]\r\nk=v\r\n[ZEL]\r\nDataPath=/d\r\n"},
        {"new key behind an unfinished line", "[ZEL]\r\nk=v", "ZEL", "DataPath", "/d",
         "[ZEL]\r\nk=v\r\nDataPath=/d\r\n"},
        {"an unfinished line replaced gains its CR LF", "[ZEL]\r\nDataPath=/old", "ZEL",
         "DataPath", "/d", "[ZEL]\r\nDataPath=/d\r\n"},
        {"a key replaced keeps its spelling", "[Sect]\r\nKey=v\r\n", "sect", "KEY", "new",
         "[Sect]\r\nKey=new\r\n"},
        {"and its layout up to the equals sign", "[A]\r\n  Key =  v  \r\n", "A", "key", "w",
         "[A]\r\n  Key =w\r\n"},
        {"new names lose their spaces", "", "  s  ", " k ", "v", "[s]\r\nk=v\r\n"},
        {"in a section that exists too", "[s]\r\n", "s", "  k  ", " v", "[s]\r\nk= v\r\n"},
        {"a tab is part of a section's name", "[ZEL]\r\nk=v\r\n", "\tZEL", "k", "w",
         "[ZEL]\r\nk=v\r\n[\tZEL]\r\nk=w\r\n"},
        {"but not of the name between a file's brackets", "[\t ZEL\t]\r\nk=v\r\n", "ZEL", "k", "w",
         "[\t ZEL\t]\r\nk=w\r\n"},
        {"a lone CR ends a line and stays", "[A]\r\nk=1\rm=2\r\n", "A", "m", "3",
         "[A]\r\nk=1\rm=3\r\n"},
        {"a deleted section leaves its comments behind",
         "[A]\r\nk=1\r\n; about A\r\n\r\nm=2\r\n;last words\r\n[B]\r\nx=2\r\n", "a", nullptr,
         nullptr, "; about A\r\n;last words\r\n[B]\r\nx=2\r\n"},
        {"a new key goes before the section's trailing comments",
         "[A]\r\nk=1\r\n; about B\r\n\r\n[B]\r\n", "A", "n", "2",
         "[A]\r\nk=1\r\nn=2\r\n; about B\r\n\r\n[B]\r\n"},
        {"or right behind the header when it has no key", "[A]\r\n; only a comment\r\n", "A",
         "n", "2", "[A]\r\nn=2\r\n; only a comment\r\n"},
        {"a commented-out key is not the key", "[A]\r\n;k=1\r\n", "A", "k", "2",
         "[A]\r\nk=2\r\n;k=1\r\n"},
        {"nor is it deleted with it", "[A]\r\n  ;k=1\r\nk=2\r\n", "A", "k", nullptr,
         "[A]\r\n  ;k=1\r\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.story);
        QByteArray contents = c.before;
        const QString key = QString::fromLatin1(c.key), value = QString::fromLatin1(c.value);
        ASSERT_TRUE(edit_profile(contents, QString::fromLatin1(c.section), c.key ? &key : nullptr,
                                 c.value ? &value : nullptr));
        EXPECT_EQ(contents, c.after);
    }
}

TEST(ProfileWrite, refuses_what_would_not_read_back) {
    struct Case {
        const char* section;
        QString key, value;
    };
    const Case cases[] = {
        {"ZEL", "DataPath", "/a\nb"},   {"ZEL", "DataPath", "/a\rb"}, {"ZEL", "Data=Path", "/a"},
        {"ZEL", " ;DataPath", "/a"},    {"ZEL", "[DataPath]", "/a"},  {"Z\nEL", "DataPath", "/a"},
        {"ZEL", "DataPath", QString::fromUtf8("/\xC5\x81\xC3\xB3\x64\xC5\xBA")},
    };
    for (const auto& c : cases) {
        QByteArray contents = "[ZEL]\r\nDataPath=/old\r\n";
        EXPECT_FALSE(edit_profile(contents, c.section, &c.key, &c.value)) << c.value.toStdString();
        EXPECT_EQ(contents, QByteArray("[ZEL]\r\nDataPath=/old\r\n"));
    }
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<absent>");
}

TEST(ProfileFiles, a_missing_file_gives_the_default_a_write_creates_it_and_a_delete_empties_it) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("session.ini"));
    EXPECT_EQ(read_profile_string(path, "HEADER", "TOTAL_SESSIONS", "none"), "none");
    EXPECT_EQ(contents(path), "<absent>") << "reading creates nothing";

    ASSERT_TRUE(write_profile_string(path, "SESSION1", "ID", " 7"));
    ASSERT_TRUE(write_profile_string(path, "SESSION1", "Date", "22/11/2026 at 09:05:07"));
    ASSERT_TRUE(write_profile_string(path, "HEADER", "TOTAL_SESSIONS", " 1"));
    EXPECT_EQ(contents(path),
              "[SESSION1]\r\nID= 7\r\nDate=22/11/2026 at 09:05:07\r\n[HEADER]\r\n"
              "TOTAL_SESSIONS= 1\r\n");
    EXPECT_EQ(read_profile_string(path, "session1", "id", {}), "7");

    ASSERT_TRUE(delete_profile_key(dir.filePath("key.ini"), "HEADER", "TOTAL_SESSIONS"));
    ASSERT_TRUE(delete_profile_section(dir.filePath("section.ini"), "HEADER"));
    EXPECT_EQ(contents(dir.filePath("key.ini")), "");
    EXPECT_EQ(contents(dir.filePath("section.ini")), "");
}

TEST(ProfileFiles, a_write_fails_where_the_file_cannot_be_replaced) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("session.ini"));
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
