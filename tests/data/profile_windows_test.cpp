// Where the profile file library once differed from what Windows does with the same file and
// the same calls; sites bring session histories that Windows wrote and people edited by hand.
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "data/profile_edit.h"
#include "data/profile_file.h"

namespace zel {
namespace {

TEST(ProfileWindows, edits_a_file_as_windows_does) {
    struct Case {
        const char* story;
        QByteArray before;
        const char* section;
        const char* key;    // null: delete the section
        const char* value;  // null: delete the key
        QByteArray after;
    };
    const Case cases[] = {
        {"a key replaced in place keeps its spelling in the file", "[Sect]\r\nKey=v\r\n", "sect",
         "KEY", "new", "[Sect]\r\nKey=new\r\n"},
        {"and its layout up to the equals sign", "[A]\r\n  Key =  v  \r\n", "A", "key", "w",
         "[A]\r\n  Key =w\r\n"},
        {"a new section and key are written without the spaces around their names", "", "  s  ",
         " k ", "v", "[s]\r\nk=v\r\n"},
        {"so is a new key in a section that exists", "[s]\r\n", "s", "  k  ", " v",
         "[s]\r\nk= v\r\n"},
        {"a tab is part of a section's name", "[ZEL]\r\nk=v\r\n", "\tZEL", "k", "w",
         "[ZEL]\r\nk=v\r\n[\tZEL]\r\nk=w\r\n"},
        {"but not of the name between a file's brackets", "[\t ZEL\t]\r\nk=v\r\n", "ZEL", "k", "w",
         "[\t ZEL\t]\r\nk=w\r\n"},
        {"a lone CR ends a line and stays", "[A]\r\nk=1\rm=2\r\n", "A", "m", "3",
         "[A]\r\nk=1\rm=3\r\n"},
        {"a replaced last line gains its CR LF", "[ZEL]\r\nDataPath=/old", "ZEL", "DataPath", "/d",
         "[ZEL]\r\nDataPath=/d\r\n"},
        {"a deleted section leaves its comments behind",
         "[A]\r\nk=1\r\n; about A\r\n\r\nm=2\r\n;last words\r\n[B]\r\nx=2\r\n", "a", nullptr,
         nullptr, "; about A\r\n;last words\r\n[B]\r\nx=2\r\n"},
        {"a new key goes after the section's last key, before its trailing comments",
         "[A]\r\nk=1\r\n; about B\r\n\r\n[B]\r\n", "A", "n", "2",
         "[A]\r\nk=1\r\nn=2\r\n; about B\r\n\r\n[B]\r\n"},
        {"or right behind the header when it has none", "[A]\r\n; only a comment\r\n", "A", "n",
         "2", "[A]\r\nn=2\r\n; only a comment\r\n"},
        {"a commented-out key is not the key", "[A]\r\n;k=1\r\n", "A", "k", "2",
         "[A]\r\nk=2\r\n;k=1\r\n"},
        {"nor is it deleted with it", "[A]\r\n  ;k=1\r\nk=2\r\n", "A", "k", nullptr,
         "[A]\r\n  ;k=1\r\n"},
    };
    for (const auto& c : cases) {
        QByteArray contents = c.before;
        ASSERT_TRUE(test::edit(contents, c.section, c.key, c.value)) << c.story;
        EXPECT_EQ(contents, c.after) << c.story;
    }
}

TEST(ProfileWindows, reads_a_file_as_windows_does) {
    const QByteArray file =
        "[ZEL]\r\nDataPath=/d\r\n"
        "[\tTabbed]\r\nk=tab\r\n"
        "[CR]\rk=1\rm=2\r"
        "[Notes]\r\n;k=commented\r\n  ; m = also\r\n";
    struct Case {
        const char* story;
        const char* section;
        const char* key;
        const char* default_value;
        const char* expected;
    };
    const Case cases[] = {
        {"spaces around a name are trimmed", "  ZEL ", " DataPath  ", "-", "/d"},
        {"a tab is not", "\tZEL", "DataPath", "-", "-"},
        {"but blanks and tabs inside the file's brackets are", "Tabbed", "k", "-", "tab"},
        {"so a looked-up name with its tab finds no section", "\tTabbed", "k", "-", "-"},
        {"a lone CR ends a line", "CR", "m", "-", "2"},
        {"a comment holds no key", "Notes", ";k", "-", "-"},
        {"however indented", "Notes", "; m", "-", "-"},
        {"a default loses its trailing spaces", "ZEL", "none", "default  ", "default"},
        {"but not its leading ones", "ZEL", "none", "  d \t ", "  d \t"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(profile_value(file, c.section, c.key, QString::fromLatin1(c.default_value)),
                  QString::fromLatin1(c.expected))
            << c.story;
}

TEST(ProfileWindows, deleting_from_a_missing_file_leaves_an_empty_one) {
    QTemporaryDir dir;
    const QString key_file = dir.filePath("key.ini"), section_file = dir.filePath("section.ini");
    ASSERT_TRUE(delete_profile_key(key_file, "HEADER", "TOTAL_SESSIONS"));
    ASSERT_TRUE(delete_profile_section(section_file, "HEADER"));
    for (const QString& path : {key_file, section_file}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        EXPECT_EQ(file.readAll(), QByteArray());
    }
}

}  // namespace
}  // namespace zel
