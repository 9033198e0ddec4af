// Profile files read and edited as Windows does with the same file and the same calls: sites
// bring session histories that Windows wrote and people edited by hand.
#include "data/profile_file.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "fakes/files.h"

namespace zel {
namespace {

using namespace test;

TEST(ProfileRead, finds_values_as_the_profile_functions_do) {
    const QByteArray file = crlf(
        "stray=before any section|[ZEL]|DataPath=/srv/zel data|  Spaced Key  =   padded value \t|"
        "Quoted=\" 7 \"|Single='x'|Half=\"x|Empty=|no equals sign|Twice=first|Twice=second|"
        "[Z\xC9L]|\xC9t\xC9=Latin-1 names|[zel]|Later=a second section is never read|"
        "[\t Tabbed\t]|k=tab|[CR]\rk=1\rm=2\r[Notes]|;k=commented|  ; m = also|"
        "[other]\nDataPath=/elsewhere\nLast=no line end");
    struct Case { const char *section, *key, *expected; };  // "-": the default
    const Case cases[] = {
        {"ZEL", "DataPath", "/srv/zel data"}, {"zel", "DATAPATH", "/srv/zel data"},
        {"  ZEL ", " DataPath  ", "/srv/zel data"},
        {"\tZEL", "DataPath", "-"},  // a tab is part of a looked-up name
        {"ZEL", "Spaced Key", "padded value"}, {"ZEL", "Quoted", " 7 "}, {"ZEL", "Single", "x"},
        {"ZEL", "Half", "\"x"}, {"ZEL", "Empty", ""}, {"ZEL", "no equals sign", "-"},
        {"ZEL", "Twice", "first"}, {"ZEL", "stray", "-"}, {"ZEL", "Last", "-"},
        {"ZEL", "Later", "-"}, {"other", "DataPath", "/elsewhere"},
        {"other", "Last", "no line end"},
        {"missing", "DataPath", "-"}, {"z\xE9l", "\xE9T\xE9", "Latin-1 names"},
        // Blanks and tabs inside the file's brackets are not part of the name.
        {"Tabbed", "k", "tab"}, {"\tTabbed", "k", "-"},
        {"CR", "m", "2"},  // a lone CR ends a line
        {"Notes", ";k", "-"}, {"Notes", "; m", "-"},
    };
    // Found by fuzzing: the history window read the whole file again for every value. The
    // index it now reads from once gives every value as the single read does.
    const ProfileIndex index(file);
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.section) + "/" + c.key);
        const QString section = QString::fromLatin1(c.section), key = QString::fromLatin1(c.key);
        EXPECT_EQ(profile_value(file, section, key, "-"), QString::fromLatin1(c.expected));
        EXPECT_EQ(index.value(section, key, "-"), QString::fromLatin1(c.expected));
    }
    // A default loses its trailing blanks, not its leading ones.
    EXPECT_EQ(profile_value(file, "ZEL", "none", "  d \t "), "  d \t");
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

// Each edit keeps every byte it doesn't touch, odd line ends, comments and blanks included; one
// that would not read back the same is refused and changes nothing.
// In the table "|" stands for CR LF.
TEST(ProfileWrite, changes_only_the_lines_it_must) {
    const QByteArray base = "; kept comment|[HEADER]|TOTAL_SESSIONS= 1||[Session1]\nID = 7   \n"
                            "Date=today||";
    const auto b = [&](const char* x, const char* y) { return QByteArray(base).replace(x, y); };
    // A null key deletes the section, a null value the key.
    struct Case { const char* story; QByteArray before; const char *section, *key, *value;
                  QByteArray after; bool written = true; };
    const Case cases[] = {
        {"replace in place", base, "header", "total_sessions", " 2", b("= 1", "= 2")},
        {"replace keeps the line's own end", base, "Session1", "ID", " 8", b("= 7   ", "= 8")},
        {"new key behind the section's last line", base, "HEADER", "Extra", "x",
         b("= 1|", "= 1|Extra=x|")},
        {"new key in the last section", base, "Session1", "Gating Mode", "Manual",
         b("today|", "today|Gating Mode=Manual|")},
        {"new section at the end", base, "Session2", "ID", " 9", base + "[Session2]|ID= 9|"},
        {"delete a section", base, "SESSION1", nullptr, nullptr, base.left(base.indexOf("[S"))},
        {"delete a key", base, "Session1", "date", nullptr, b("Date=today|", "")},
        {"delete what isn't there", base, "Session9", nullptr, nullptr, base},
        {"into nothing", "", "ZEL", "DataPath", "/d", "[ZEL]|DataPath=/d|"},
        {"behind an unfinished header", "[ZEL]", "ZEL", "DataPath", "/d", "[ZEL]|DataPath=/d|"},
        {"new section behind an unfinished line", "[A]|k=v", "ZEL", "DataPath", "/d",
         "[A]|k=v|[ZEL]|DataPath=/d|"},
        {"new key behind an unfinished line", "[ZEL]|k=v", "ZEL", "DataPath", "/d",
         "[ZEL]|k=v|DataPath=/d|"},
        {"an unfinished line replaced gains its CR LF", "[ZEL]|DataPath=/old", "ZEL", "DataPath",
         "/d", "[ZEL]|DataPath=/d|"},
        {"a key keeps its spelling", "[Sect]|Key=v|", "sect", "KEY", "new", "[Sect]|Key=new|"},
        {"and its layout up to the '='", "[A]|  Key =  v  |", "A", "key", "w", "[A]|  Key =w|"},
        {"new names lose their spaces", "", "  s  ", " k ", "v", "[s]|k=v|"},
        {"in a section that exists too", "[s]|", "s", "  k  ", " v", "[s]|k= v|"},
        {"a tab is part of a section's name", "[ZEL]|k=v|", "\tZEL", "k", "w",
         "[ZEL]|k=v|[\tZEL]|k=w|"},
        {"but not of the name between a file's brackets", "[\t ZEL\t]|k=v|", "ZEL", "k", "w",
         "[\t ZEL\t]|k=w|"},
        {"a lone CR ends a line and stays", "[A]|k=1\rm=2|", "A", "m", "3", "[A]|k=1\rm=3|"},
        {"a deleted section leaves its comments behind",
         "[A]|k=1|; about A||m=2|;last words|[B]|x=2|", "a", nullptr, nullptr,
         "; about A|;last words|[B]|x=2|"},
        {"a new key goes before the section's trailing comments", "[A]|k=1|; about B||[B]|", "A",
         "n", "2", "[A]|k=1|n=2|; about B||[B]|"},
        {"or right behind the header when it has no key", "[A]|; only a comment|", "A", "n", "2",
         "[A]|n=2|; only a comment|"},
        {"a commented-out key is not the key", "[A]|;k=1|", "A", "k", "2", "[A]|k=2|;k=1|"},
        {"nor is it deleted with it", "[A]|  ;k=1|k=2|", "A", "k", nullptr, "[A]|  ;k=1|"},
        // Refused, as it would not read back the same.
        {"a LF in a value", "[Z]|k=v|", "Z", "k", "a\nb", "[Z]|k=v|", false},
        {"a CR in a value", "[Z]|k=v|", "Z", "k", "a\rb", "[Z]|k=v|", false},
        {"a key with '='", "[Z]|k=v|", "Z", "k=j", "w", "[Z]|k=v|", false},
        {"a key beginning with ';'", "[Z]|k=v|", "Z", " ;k", "w", "[Z]|k=v|", false},
        {"a key in brackets", "[Z]|k=v|", "Z", "[k]", "w", "[Z]|k=v|", false},
        {"a line break in a section", "[Z]|k=v|", "Z\nL", "k", "w", "[Z]|k=v|", false},
        {"beyond Latin-1", "[Z]|k=v|", "Z", "k", "\xC5\x81\xC3\xB3", "[Z]|k=v|", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.story);
        QByteArray contents = crlf(c.before);
        const QString key = QString::fromUtf8(c.key), value = QString::fromUtf8(c.value);
        EXPECT_EQ(edit_profile(contents, QString::fromUtf8(c.section), c.key ? &key : nullptr,
                               c.value ? &value : nullptr),
                  c.written);
        EXPECT_EQ(contents, crlf(c.after));
    }
}

TEST(ProfileFiles, a_missing_file_reads_the_default_a_write_creates_it_a_delete_empties_it) {
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

    // A write fails where the file cannot be replaced.
    QFile::setPermissions(path, QFileDevice::ReadOwner);
    EXPECT_FALSE(write_profile_string(path, "session1", "ID", "8"));
    EXPECT_EQ(read_profile_string(path, "session1", "ID", {}), "7");

    QDir(dir.path()).mkdir("a_folder");
    for (const QString& where : {dir.filePath("no/such/dir.ini"), dir.filePath("a_folder")}) {
        EXPECT_FALSE(write_profile_string(where, "ZEL", "DataPath", "/a"));
        EXPECT_EQ(read_profile_string(where, "ZEL", "DataPath", "d"), "d");
    }
}

}  // namespace
}  // namespace zel
