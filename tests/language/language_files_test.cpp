#include <gtest/gtest.h>
#include <zlib.h>

#include <QDir>
#include <QFile>
#include <optional>

#include "data/curve_file_reader.h"
#include "fakes/rig.h"
#include "language/language_catalogue.h"
#include "language/language_file.h"
#include "language/messages.h"

namespace zel {
namespace {

using test::Rig;

// A language file: the first line, then the message lines, each ended by CR LF.
QByteArray language_bytes(const QByteArray& first_line, const QList<QByteArray>& rows) {
    QByteArray bytes = first_line + "\r\n";
    for (const QByteArray& row : rows) bytes += row + "\r\n";
    return bytes;
}

QList<QByteArray> message_rows(int count, const char* prefix = "Nachricht") {
    QList<QByteArray> rows;
    for (int k = 0; k < count; ++k)
        rows.append(QByteArray(prefix) + ' ' + QByteArray::number(101 + k));
    return rows;
}

// The checksum as zlib computes it, in the companion's hexadecimal.
QByteArray zlib_hex(const QByteArray& bytes) {
    const uLong crc = crc32(crc32(0L, Z_NULL, 0), reinterpret_cast<const Bytef*>(bytes.constData()),
                            static_cast<uInt>(bytes.size()));
    return QByteArray::number(static_cast<qulonglong>(crc), 16).toUpper();
}

class LanguageFiles : public ::testing::Test {
  protected:
    void TearDown() override { load_default_messages(); }

    QString folder() const { return rig.form.AppDataPath + "/languages"; }

    void put(const QString& name, const QByteArray& bytes) {
        QDir().mkpath(folder());
        QFile file(folder() + '/' + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    // The file and a companion with its checksum behind "CRC:".
    void put_signed(const QString& name, const QByteArray& bytes) {
        put(name, bytes);
        put(language_companion_path(name), "CRC:" + zlib_hex(bytes) + "\r\n");
    }

    std::vector<QString> accepted_names() const { return rig.form.language_name; }

    Rig rig;
};

// Finds a variant of a file whose checksum has the wanted form, by changing its first line.
QByteArray variant_with(const QList<QByteArray>& rows, bool (*wanted)(const QByteArray& hex)) {
    for (int k = 0;; ++k) {
        const QByteArray bytes = language_bytes("Deutsch,v" + QByteArray::number(k), rows);
        if (wanted(zlib_hex(bytes))) return bytes;
    }
}

TEST_F(LanguageFiles, accepts_only_a_file_with_its_checksum_and_255_message_lines) {
    const QList<QByteArray> rows = message_rows(255);
    QList<QByteArray> with_gap = rows;
    with_gap.insert(100, QByteArray());
    QList<QByteArray> with_blank = rows;
    with_blank.insert(100, QByteArray(" "));
    const QByteArray plain = language_bytes("Deutsch", rows);
    const QByteArray lettered =
        variant_with(message_rows(254), [](const QByteArray& hex) { return hex.contains('A'); });
    const QByteArray short_hex =
        variant_with(message_rows(254), [](const QByteArray& hex) { return hex.size() < 8; });

    struct Case {
        const char* name;
        QByteArray file;
        std::optional<QByteArray> companion;  // nullopt: none; else its whole text
        bool accepted;
    };
    const Case cases[] = {
        {"255 lines", plain, "CRC:" + zlib_hex(plain) + "\r\n", true},
        {"254 lines", language_bytes("Deutsch", message_rows(254)),
         "CRC:" + zlib_hex(language_bytes("Deutsch", message_rows(254))) + "\r\n", false},
        {"256 lines", language_bytes("Deutsch", message_rows(256)),
         "CRC:" + zlib_hex(language_bytes("Deutsch", message_rows(256))) + "\r\n", false},
        {"empty lines at the end", plain + "\r\n\r\n",
         "CRC:" + zlib_hex(plain + "\r\n\r\n") + "\r\n", true},
        {"an empty line in the middle", language_bytes("Deutsch", with_gap),
         "CRC:" + zlib_hex(language_bytes("Deutsch", with_gap)), true},
        {"a blank line is not empty", language_bytes("Deutsch", with_blank),
         "CRC:" + zlib_hex(language_bytes("Deutsch", with_blank)), false},
        {"checksum alone", plain, zlib_hex(plain) + "\r\n", true},
        {"any text before a colon", plain, "Checksum of the file:" + zlib_hex(plain), true},
        {"a comma ends the companion's field", plain, "CRC:" + zlib_hex(plain) + ",more", true},
        {"a blank after the checksum", plain, "CRC:" + zlib_hex(plain) + " \r\n", false},
        {"lower-case digits", lettered, "CRC:" + zlib_hex(lettered).toLower() + "\r\n", false},
        {"leading zeros", short_hex, "CRC:" + zlib_hex(short_hex).rightJustified(8, '0'), false},
        {"no companion", plain, std::nullopt, false},
        {"another file's checksum", plain, "CRC:" + zlib_hex(plain + "x"), false},
    };
    for (const auto& c : cases) {
        Rig fresh;
        const QString folder = fresh.form.AppDataPath + "/languages";
        QDir().mkpath(folder);
        QFile lng(folder + "/de.lng");
        ASSERT_TRUE(lng.open(QIODevice::WriteOnly));
        lng.write(c.file);
        lng.close();
        if (c.companion) {
            QFile sfv(folder + "/de.sfv");
            ASSERT_TRUE(sfv.open(QIODevice::WriteOnly));
            sfv.write(*c.companion);
        }
        fresh.form.language_file = QStringLiteral("English");
        fresh.form.load_language_catalogue();
        EXPECT_EQ(fresh.form.language_name.size(), c.accepted ? 1u : 0u) << c.name;
        EXPECT_EQ(fresh.form.accepted_language_count, c.accepted ? 1 : 0) << c.name;
        if (c.accepted) {
            EXPECT_EQ(fresh.form.language_path.front(), folder + "/de.lng") << c.name;
        }
    }
}

TEST_F(LanguageFiles, lists_names_in_order_and_skips_what_a_file_list_hides) {
    put_signed("b.lng", language_bytes("  Beta", message_rows(255)));
    put_signed("A.lng", language_bytes("\"Alpha, quoted\"", message_rows(255)));
    // Capitals in the extension leave no companion path but the file's own name.
    put("c.LNG", language_bytes("Gamma", message_rows(255)));
    put("c.sfv", "CRC:" + zlib_hex(language_bytes("Gamma", message_rows(255))));
    put_signed(".hidden.lng", language_bytes("Hidden", message_rows(255)));
    put_signed("d.lng.txt", language_bytes("Delta", message_rows(255)));
    rig.form.language_file = QStringLiteral("English");
    rig.form.load_language_catalogue();
    EXPECT_EQ(accepted_names(), (std::vector<QString>{"Alpha, quoted", "Beta"}));
}

TEST_F(LanguageFiles, loads_the_chosen_language_whole) {
    put_signed("de.lng", language_bytes("Deutsch", message_rows(255)));
    rig.form.language_file = QStringLiteral("Deutsch");
    rig.form.load_language_catalogue();
    EXPECT_EQ(rig.form.language_file, "Deutsch");
    EXPECT_EQ(message_text(101), "Nachricht 101");
    EXPECT_EQ(message_text(137), "Nachricht 137");
    EXPECT_EQ(message_text(355), "Nachricht 355");
    EXPECT_EQ(message_text(356), "");
}

// The review opened alone on curve files once read them against the built-in stamp only, and
// refused every curve of a site whose language file is in force.
TEST_F(LanguageFiles, the_review_alone_brings_the_language_the_settings_name) {
    QList<QByteArray> rows = message_rows(255);
    rows[107 - 101] = "KURVENDATEI";
    put_signed("de.lng", language_bytes("Deutsch", rows));
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
        QFile file(curve);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(c.stamp) +
                   "\r\nHeaderStart\r\nThreshold:1.20\r\nCount Frequency:  50 \r\n"
                   "HeaderEnd\r\n0.02;0.5;1;1; - ; - ; - \r\n");
        file.close();
        CurveData data;
        LoadCurveData2(curve, data, QLatin1Char('.'));
        EXPECT_EQ(data.volume, std::vector<double>{0.5}) << c.story;
    }
}

TEST_F(LanguageFiles, a_comma_in_the_first_line_makes_its_rest_message_101) {
    put_signed("de.lng", language_bytes("Deutsch,Erste Nachricht", message_rows(254, "Zeile")));
    rig.form.language_file = QStringLiteral("Deutsch");
    rig.form.load_language_catalogue();
    EXPECT_EQ(accepted_names(), std::vector<QString>{"Deutsch"});
    EXPECT_EQ(message_text(101), "Erste Nachricht");
    EXPECT_EQ(message_text(102), "Zeile 101");
    EXPECT_EQ(message_text(355), "Zeile 354");
}

TEST_F(LanguageFiles, an_empty_line_among_the_messages_displaces_the_rows_behind_it) {
    QList<QByteArray> rows = message_rows(255);
    rows.insert(9, QByteArray());  // before message 110
    put_signed("de.lng", language_bytes("Deutsch", rows));
    rig.form.language_file = QStringLiteral("Deutsch");
    rig.form.load_language_catalogue();
    EXPECT_EQ(message_text(109), "Nachricht 109");
    EXPECT_EQ(message_text(110), "");
    EXPECT_EQ(message_text(111), "Nachricht 110");
    EXPECT_EQ(message_text(355), "Nachricht 354") << "the last row falls away";
}

TEST_F(LanguageFiles, of_two_files_with_one_name_the_later_prevails) {
    put_signed("a.lng", language_bytes("Deutsch", message_rows(255, "Erste")));
    put_signed("b.lng", language_bytes("Deutsch", message_rows(255, "Zweite")));
    rig.form.language_file = QStringLiteral("Deutsch");
    rig.form.load_language_catalogue();
    EXPECT_EQ(accepted_names(), (std::vector<QString>{"Deutsch", "Deutsch"}));
    EXPECT_EQ(message_text(101), "Zweite 101");
}

TEST_F(LanguageFiles, the_built_in_english_comes_first_and_is_the_fallback) {
    put_signed("en.lng", language_bytes("English", message_rows(255, "Translated")));
    put_signed("de.lng", language_bytes("Deutsch", message_rows(254)));  // rejected
    struct Case {
        const char* stored;
        const char* in_force;
    };
    const Case cases[] = {{"English", "English"}, {"Deutsch", "English"}, {"", "English"}};
    for (const auto& c : cases) {
        set_message_slot(0, QStringLiteral("stale"));
        rig.form.language_file = QString::fromLatin1(c.stored);
        rig.form.load_language_catalogue();
        EXPECT_EQ(rig.form.language_file, QString::fromLatin1(c.in_force)) << c.stored;
        EXPECT_EQ(message_text(101), builtin_message_text(101)) << c.stored;
        EXPECT_EQ(accepted_names(), std::vector<QString>{"English"}) << c.stored;
    }
}

TEST_F(LanguageFiles, a_missing_folder_or_a_failing_scan_gives_english) {
    rig.form.language_file = QStringLiteral("Deutsch");
    rig.form.load_language_catalogue();
    EXPECT_EQ(rig.form.language_file, "English");
    EXPECT_EQ(message_text(101), builtin_message_text(101));

    // An empty companion can't be read at all: the whole scan fails, not just that file.
    put_signed("de.lng", language_bytes("Deutsch", message_rows(255)));
    put("fr.lng", language_bytes("Francais", message_rows(255)));
    put("fr.sfv", "");
    set_message_slot(0, QStringLiteral("stale"));
    rig.form.language_file = QStringLiteral("Deutsch");
    rig.form.load_language_catalogue();
    EXPECT_EQ(rig.form.language_file, "English");
    EXPECT_EQ(message_text(101), builtin_message_text(101));
}

TEST_F(LanguageFiles, a_file_that_fails_while_loading_leaves_english_never_a_mixture) {
    put("short.lng", language_bytes("Deutsch", message_rows(100)));
    set_message_slot(0, QStringLiteral("stale"));
    rig.form.language_file = QStringLiteral("Deutsch");
    rig.form.read_language_file(folder() + "/short.lng");
    EXPECT_EQ(rig.form.language_file, "English");
    EXPECT_EQ(message_text(101), builtin_message_text(101));
    EXPECT_EQ(message_text(355), builtin_message_text(355));
}

TEST(LanguageCompanionPath, replaces_every_lower_case_extension) {
    struct Case {
        const char* path;
        const char* companion;
    };
    const Case cases[] = {
        {"/a/languages/de.lng", "/a/languages/de.sfv"},
        {"/a/x.lng/languages/de.lng", "/a/x.sfv/languages/de.sfv"},
        {"/a/languages/de.LNG", "/a/languages/de.LNG"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(language_companion_path(QString::fromLatin1(c.path)),
                  QString::fromLatin1(c.companion));
}

}  // namespace
}  // namespace zel
