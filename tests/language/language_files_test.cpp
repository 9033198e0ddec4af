#include <gtest/gtest.h>
#include <zlib.h>

#include <QDir>
#include <QFile>
#include <optional>

#include "data/curve_file_reader.h"
#include "fakes/files.h"
#include "fakes/rig.h"
#include "language/language_catalogue.h"
#include "language/language_file.h"
#include "language/messages.h"

namespace zel {
namespace {

using test::Rig;

// A language file: the first line, then `count` message lines "<prefix> 101" on, each ended
// by CR LF.
QByteArray language(const QByteArray& first_line, int count = 255, const char* word = "Nachricht") {
    QByteArray bytes = first_line + "\r\n";
    for (int k = 0; k < count; ++k)
        bytes += QByteArray(word) + ' ' + QByteArray::number(101 + k) + "\r\n";
    return bytes;
}

// The checksum as zlib computes it, in the companion's hexadecimal.
QByteArray zlib_hex(const QByteArray& bytes) {
    const uLong crc = crc32(crc32(0L, Z_NULL, 0), reinterpret_cast<const Bytef*>(bytes.constData()),
                            static_cast<uInt>(bytes.size()));
    return QByteArray::number(static_cast<qulonglong>(crc), 16).toUpper();
}

// Finds a variant of a file whose checksum has the wanted form, by changing its first line.
QByteArray variant_with(bool (*wanted)(const QByteArray& hex)) {
    for (int k = 0;; ++k) {
        const QByteArray bytes = language("Deutsch,v" + QByteArray::number(k), 254);
        if (wanted(zlib_hex(bytes))) return bytes;
    }
}

class LanguageFiles : public ::testing::Test {
  protected:
    void TearDown() override { load_default_messages(); }

    QString folder() const { return rig.form.AppDataPath + "/languages"; }

    void put(const QString& name, const QByteArray& bytes) {
        QDir().mkpath(folder());
        test::write(folder() + '/' + name, bytes);
    }

    // The file and a companion with its checksum behind "CRC:".
    void put_signed(const QString& name, const QByteArray& bytes) {
        put(name, bytes);
        put(language_companion_path(name), "CRC:" + zlib_hex(bytes) + "\r\n");
    }

    static void expect_english() {
        for (int id : {101, 355}) EXPECT_EQ(message_text(id), builtin_message_text(id)) << id;
    }

    Rig rig;
};

TEST_F(LanguageFiles, accepts_only_a_file_with_its_checksum_and_255_message_lines_or_the_added) {
    const QByteArray plain = language("Deutsch");
    const QByteArray lettered = variant_with([](const QByteArray& h) { return h.contains('A'); });
    const QByteArray short_hex = variant_with([](const QByteArray& h) { return h.size() < 8; });
    const QByteArray gap = QByteArray(plain).replace("Nachricht 201", "\r\nNachricht 201");
    // Every message line there may be, and one blank line more.
    const QByteArray blank = language("Deutsch", 255 + number_of_added_messages)
                                 .replace("Nachricht 201", " \r\nNachricht 201");
    struct Case {
        const char* name; QByteArray file;
        std::optional<QByteArray> companion;  // nullopt: none; a % stands for the file's checksum
        bool accepted;
    };
    const Case cases[] = {
        {"255 lines", plain, "CRC:%\r\n", true},
        {"254 lines", language("Deutsch", 254), "CRC:%\r\n", false},
        // Behind the 255, one line for each message added since, or fewer.
        {"256 lines", language("Deutsch", 256), "CRC:%\r\n", true},
        {"a line more than the added messages",
         language("Deutsch", 256 + number_of_added_messages), "CRC:%\r\n", false},
        {"empty lines at the end", plain + "\r\n\r\n", "CRC:%\r\n", true},
        {"an empty line in the middle", gap, "CRC:%", true},
        {"a blank line is not empty", blank, "CRC:%", false},
        {"checksum alone", plain, "%\r\n", true},
        {"any text before a colon", plain, "Checksum of the file:%", true},
        {"a comma ends the companion's field", plain, "CRC:%,more", true},
        {"a blank after the checksum", plain, "CRC:% \r\n", false},
        {"lower-case digits", lettered, "CRC:" + zlib_hex(lettered).toLower() + "\r\n", false},
        {"leading zeros", short_hex, "CRC:" + zlib_hex(short_hex).rightJustified(8, '0'), false},
        {"no companion", plain, std::nullopt, false},
        {"another file's checksum", plain, "CRC:" + zlib_hex(plain + "x"), false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QDir(folder()).removeRecursively();
        put("de.lng", c.file);
        if (c.companion) put("de.sfv", QByteArray(*c.companion).replace('%', zlib_hex(c.file)));
        rig.form.language_file = QStringLiteral("English");
        rig.form.load_language_catalogue();
        EXPECT_EQ(rig.form.language_path,
                  c.accepted ? std::vector<QString>{folder() + "/de.lng"} : std::vector<QString>{});
        EXPECT_EQ(rig.form.accepted_language_count, c.accepted ? 1 : 0);
    }
}

TEST_F(LanguageFiles, lists_the_accepted_and_brings_the_chosen_in_force_whole_or_english) {
    struct File { const char* name; QByteArray bytes; bool signed_ = true; };
    struct Case {
        const char* story; std::vector<File> files; const char* chosen; const char* in_force;
        std::vector<QString> names;
        std::vector<std::pair<int, QString>> messages;  // none: all the built-in English
    };
    const QByteArray gamma = language("Gamma");
    const std::vector<File> english_and_a_rejected = {
        {"en.lng", language("English", 255, "Translated")}, {"de.lng", language("Deutsch", 254)}};
    const Case cases[] = {
        {"names in order; what a file list hides is skipped",
         {{"b.lng", language("  Beta")}, {"A.lng", language("\"Alpha, quoted\"")},
          // Capitals in the extension leave the file without a companion.
          {"c.LNG", gamma, false}, {"c.sfv", "CRC:" + zlib_hex(gamma), false},
          {".hidden.lng", language("Hidden")}, {"d.lng.txt", language("Delta")}},
         "English", "English", {"Alpha, quoted", "Beta"}, {}},
        {"the chosen language whole", {{"de.lng", language("Deutsch")}}, "Deutsch", "Deutsch",
         {"Deutsch"},
         {{101, "Nachricht 101"}, {137, "Nachricht 137"}, {355, "Nachricht 355"}, {356, ""}}},
        {"a comma in the first line makes its rest message 101",
         {{"de.lng", language("Deutsch,Erste Nachricht", 254, "Zeile")}}, "Deutsch", "Deutsch",
         {"Deutsch"}, {{101, "Erste Nachricht"}, {102, "Zeile 101"}, {355, "Zeile 354"}}},
        {"an empty line displaces the rows behind it and the last falls away",
         {{"de.lng", language("Deutsch").replace("Nachricht 110", "\r\nNachricht 110")}},
         "Deutsch", "Deutsch", {"Deutsch"},
         {{109, "Nachricht 109"}, {110, ""}, {111, "Nachricht 110"}, {355, "Nachricht 354"}}},
        {"an added message from the file that has it, the others in English",
         {{"de.lng", language("Deutsch", 256)}}, "Deutsch", "Deutsch", {"Deutsch"},
         {{355, "Nachricht 355"}, {first_added_message, "Nachricht 356"},
          {first_added_message + 1, builtin_message_text(first_added_message + 1)}}},
        {"of two files with one name the later prevails",
         {{"a.lng", language("Deutsch", 255, "Erste")},
          {"b.lng", language("Deutsch", 255, "Zweite")}},
         "Deutsch", "Deutsch", {"Deutsch", "Deutsch"}, {{101, "Zweite 101"}}},
        // The built-in English comes first and is the fallback.
        {"English chosen", english_and_a_rejected, "English", "English", {"English"}, {}},
        {"a rejected file chosen", english_and_a_rejected, "Deutsch", "English", {"English"}, {}},
        {"nothing chosen", english_and_a_rejected, "", "English", {"English"}, {}},
        {"no folder", {}, "Deutsch", "English", {}, {}},
        // An empty companion can't be read at all: the whole scan fails, not just that file.
        {"a failing scan",
         {{"de.lng", language("Deutsch")}, {"fr.lng", language("Francais"), false},
          {"fr.sfv", "", false}},
         "Deutsch", "English", {"Deutsch"}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.story);
        QDir(folder()).removeRecursively();
        for (const File& f : c.files)
            f.signed_ ? put_signed(f.name, f.bytes) : put(f.name, f.bytes);
        set_message_slot(0, QStringLiteral("stale"));
        rig.form.language_file = QString::fromLatin1(c.chosen);
        rig.form.load_language_catalogue();
        EXPECT_EQ(rig.form.language_file, QString::fromLatin1(c.in_force));
        EXPECT_EQ(rig.form.language_name, c.names);
        for (const auto& [id, text] : c.messages) EXPECT_EQ(message_text(id), text) << id;
        if (c.messages.empty()) expect_english();
    }
}

TEST_F(LanguageFiles, a_file_that_fails_while_loading_leaves_english_never_a_mixture) {
    put("short.lng", language("Deutsch", 100));
    set_message_slot(0, QStringLiteral("stale"));
    rig.form.language_file = QStringLiteral("Deutsch");
    rig.form.read_language_file(folder() + "/short.lng");
    EXPECT_EQ(rig.form.language_file, "English");
    expect_english();
}

// The review opened alone on curve files once read them against the built-in stamp only, and
// refused every curve of a site whose language file is in force.
TEST_F(LanguageFiles, the_review_alone_brings_the_language_the_settings_name) {
    put_signed("de.lng", language("Deutsch").replace("Nachricht 107", "KURVENDATEI"));
    struct Case {
        const char* story;
        const char* stored;          // the language zel.ini names; null: no zel.ini
        const char* written_format;  // the number format zel.ini was written under
        const char* stamp;           // message 107 in force afterwards
    };
    const Case cases[] = {
        {"the site's language", "Deutsch", "dot", "KURVENDATEI"},
        {"English named", "English", "dot", "CURVE_DATA_FILE_STAMP"},
        {"a language without its file", "Francais", "dot", "CURVE_DATA_FILE_STAMP"},
        {"settings of a comma machine: the console's defaults", "Deutsch", "comma",
         "CURVE_DATA_FILE_STAMP"},
        {"no settings file", nullptr, "dot", "CURVE_DATA_FILE_STAMP"},
    };
    const QString curve = rig.form.AppDataPath + QStringLiteral("/Doe_1.dat");
    for (const auto& c : cases) {
        QFile::remove(rig.form.AppDataPath + QStringLiteral("/zel.ini"));
        if (c.stored) {
            rig.form.language_file = QString::fromLatin1(c.stored);
            rig.form.number_format = QString::fromLatin1(c.written_format);
            rig.form.save_ini_file();
        }
        load_default_messages();
        load_language_in_force(rig.form.AppDataPath, QLatin1Char('.'));
        EXPECT_EQ(message_text(107), QString::fromLatin1(c.stamp)) << c.story;

        // A curve the console wrote in force of that language reads back.
        test::write(curve, QByteArray(c.stamp) +
                               "\r\nHeaderStart\r\nThreshold:1.20\r\nCount Frequency:  50 \r\n"
                               "HeaderEnd\r\n0.02;0.5;1;1; - ; - ; - \r\n");
        CurveData data;
        LoadCurveData2(curve, data, QLatin1Char('.'));
        EXPECT_EQ(data.volume, std::vector<double>{0.5}) << c.story;
    }
}

}  // namespace
}  // namespace zel
