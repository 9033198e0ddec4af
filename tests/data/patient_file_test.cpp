#include "data/patient_file.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <functional>

#include "app/zel_error.h"
#include "data/crc_companion.h"
#include "fakes/qt_printers.h"

namespace zel {
namespace {

const QString stamp = QStringLiteral("ZEL Patient Parameter File");
const QString version = QStringLiteral("3.00.01");
const QString date = QStringLiteral("11/22/2024");

PatientParameters smith() {
    PatientParameters p;
    p.last_name = QStringLiteral("Smith");
    p.first_name = QStringLiteral("John");
    p.medical_id = QStringLiteral("12345");
    p.thresh = 1.2f;
    p.duration = 12;
    p.max_y = 2.5;
    p.inhale = true;
    p.x_scale_factor = 1;
    p.max_x = 1000;
    p.gated = false;
    return p;
}

QByteArray crlf(const QStringList& lines) {
    QByteArray bytes;
    for (const QString& line : lines) bytes += line.toLatin1() + "\r\n";
    return bytes;
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<absent>");
}

// By the file's mode: a test run as root may write anything, so the "User" flags don't tell.
bool is_read_only(const QString& path) {
    return !(QFile::permissions(path) &
             (QFileDevice::WriteOwner | QFileDevice::WriteGroup | QFileDevice::WriteOther));
}

int error_number(const std::function<void()>& action) {
    try {
        action();
    } catch (const ZelError& e) {
        return e.number;
    }
    return 0;
}

// The 14 lines of a sound patient file on a dot system, to be spoiled one line at a time.
QStringList sound_lines() {
    return patient_file_lines(stamp, version, smith(), date, QStringLiteral("dot"),
                              QLatin1Char('.'));
}

class PatientFile : public ::testing::Test {
  protected:
    QString path_in(const QString& folder) {
        QDir(dir.path()).mkpath(folder);
        return dir.path() + QLatin1Char('/') + folder + QStringLiteral("/Smith.zel");
    }
    QString patient_path() { return path_in(QStringLiteral("Smith_John_12345")); }

    // A file of any contents with a companion that matches it, as if written by the console.
    QString hand_made(const QByteArray& bytes) {
        const QString path = patient_path();
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        EXPECT_TRUE(write_crc_companion(companion_path(path), CalculateCRC(path)));
        return path;
    }
    QString hand_made(const QStringList& lines) { return hand_made(crlf(lines)); }

    PatientFileReading read(const QString& path, const char* number_format = "dot") {
        return read_patient_file(path, stamp, version, QString::fromLatin1(number_format));
    }

    QTemporaryDir dir;
};

// The dot system's lines are seen byte for byte in the written file below.
TEST(PatientFileLines, hold_the_values_in_the_comma_system_form) {
    PatientParameters p = smith();
    p.last_name = QStringLiteral("M\u00fcller");
    p.first_name = QStringLiteral("A:B");
    p.thresh = 0.35f;
    p.duration = 15.5;
    p.inhale = false;
    p.x_scale_factor = 1.5f;
    p.max_x = 1234.5;
    p.gated = true;
    EXPECT_EQ(patient_file_lines(stamp, version, p, date, "comma", QLatin1Char(',')),
              QStringList({"ZEL Patient Parameter File", "3.00.01",
                           QStringLiteral("Patient Last Name:M\u00fcller"),
                           "Patient First Name:A:B", "Patient Medical ID:12345", "Date:11/22/2024",
                           "Threshold:0,35", "Breath Hold Duration: 15,5 ", "Y-Scale Range: 2,5 ",
                           "Trigger on Inhale:False", "X-Axis Scale: 1,5 ",
                           "X-Axis length: 1234,5 ", "Gated:True", "Number Format:comma"}));
}

TEST(PatientFileLines, round_the_threshold_to_two_places_and_put_a_minus_in_the_sign_place) {
    PatientParameters p = smith();
    p.thresh = 1.234f;
    p.duration = -3;
    const QStringList lines = patient_file_lines(stamp, version, p, date, "dot", QLatin1Char('.'));
    EXPECT_EQ(lines[6], "Threshold:1.23");
    EXPECT_EQ(lines[7], "Breath Hold Duration:-3 ");
}

TEST(PatientFilePaths, name_the_folder_by_the_patient_and_the_file_by_the_last_name) {
    EXPECT_EQ(patient_folder("/data", "Smith", "John", "12345"), "/data/Smith_John_12345");
    EXPECT_EQ(patient_file_path("/data", "Smith", "John", "12345"),
              "/data/Smith_John_12345/Smith.zel");
    struct Case {
        const char* zel;
        const char* sfv;
    };
    const Case cases[] = {
        {"/data/Smith_John_1/Smith.zel", "/data/Smith_John_1/Smith.sfv"},
        {"/data/Smith_John_1/Smith.ZEL", "/data/Smith_John_1/Smith.ZEL"},
        {"/data/old.zel/Smith_John_1/Smith.zel", "/data/old.sfv/Smith_John_1/Smith.sfv"},
    };
    for (const auto& c : cases) EXPECT_EQ(companion_path(c.zel), c.sfv) << c.zel;
}

TEST_F(PatientFile, is_written_whole_with_crlf_left_read_only_and_followed_by_its_companion) {
    const QString path = patient_path();
    ASSERT_TRUE(write_patient_files(path, sound_lines()));

    EXPECT_EQ(contents(path),
              "ZEL Patient Parameter File\r\n3.00.01\r\nPatient Last Name:Smith\r\n"
              "Patient First Name:John\r\nPatient Medical ID:12345\r\nDate:11/22/2024\r\n"
              "Threshold:1.20\r\nBreath Hold Duration: 12 \r\nY-Scale Range: 2.5 \r\n"
              "Trigger on Inhale:True\r\nX-Axis Scale: 1 \r\nX-Axis length: 1000 \r\n"
              "Gated:False\r\nNumber Format:dot\r\n");
    EXPECT_TRUE(is_read_only(path));
    const QString sfv = companion_path(path);
    EXPECT_EQ(contents(sfv), crc_companion_line(CalculateCRC(path)));
    EXPECT_FALSE(is_read_only(sfv));
    EXPECT_EQ(QDir(QFileInfo(path).path()).entryList(QDir::Files | QDir::Hidden),
              QStringList({"Smith.sfv", "Smith.zel"}));
}

TEST_F(PatientFile, rewrites_a_read_only_file_and_its_companion) {
    const QString path = patient_path();
    ASSERT_TRUE(write_patient_files(path, sound_lines()));
    ASSERT_TRUE(is_read_only(path));

    PatientParameters changed = smith();
    changed.thresh = 0.8f;
    const QStringList lines =
        patient_file_lines(stamp, version, changed, date, QStringLiteral("dot"), QLatin1Char('.'));
    ASSERT_TRUE(write_patient_files(path, lines));
    EXPECT_EQ(contents(path), crlf(lines));
    EXPECT_TRUE(is_read_only(path));
    EXPECT_EQ(contents(companion_path(path)), crc_companion_line(CalculateCRC(path)));
    EXPECT_EQ(read(path).holding.thresh, 0.8f);
}

TEST_F(PatientFile, write_fails_where_nothing_could_read_it_back) {
    QStringList foreign = sound_lines();
    foreign[2] = QStringLiteral("Patient Last Name:\u0141ukasz");
    struct Case {
        const char* name;
        QString path;
        QStringList lines;
    };
    const Case cases[] = {
        {"missing folder", dir.path() + "/absent/Smith.zel", sound_lines()},
        {"name beyond Latin-1", patient_path(), foreign},
        // The companion's path runs through a folder that doesn't exist.
        {"folder named .zel", path_in("old.zel"), sound_lines()},
    };
    for (const auto& c : cases) EXPECT_FALSE(write_patient_files(c.path, c.lines)) << c.name;
    EXPECT_FALSE(QFileInfo::exists(patient_path()));
}

TEST_F(PatientFile, reads_back_what_was_written) {
    PatientParameters comma = smith();
    comma.last_name = QStringLiteral("O'Neil:Jr");
    comma.first_name = QStringLiteral("A:B");
    comma.medical_id = QStringLiteral("ID:007");
    comma.thresh = 1.234f;
    comma.duration = 20;
    comma.max_y = 3.25;
    comma.inhale = false;
    comma.x_scale_factor = 1.5f;
    comma.max_x = 1234.5;
    comma.gated = true;

    struct Case {
        const char* number_format;
        char separator;
        PatientParameters parameters;
        PatientHolding holding;
    };
    const Case cases[] = {
        {"dot", '.', smith(), {"Smith", "John", "12345", 1.2f, 12, 2.5f, "True", "False", 1, 1000}},
        {"comma",
         ',',
         comma,
         {"O'Neil:Jr", "A:B", "ID:007", 1.23f, 20, 3.25f, "False", "True", 1.5f, 1234.5}},
    };
    for (const auto& c : cases) {
        const QString path = patient_path();
        ASSERT_TRUE(write_patient_files(
            path,
            patient_file_lines(stamp, version, c.parameters, date,
                               QString::fromLatin1(c.number_format), QLatin1Char(c.separator))));
        const PatientFileReading reading = read(path, c.number_format);
        ASSERT_EQ(reading.verdict, PatientFileVerdict::accepted) << c.number_format;
        const PatientHolding& h = reading.holding;
        EXPECT_EQ(reading.found_number_format, c.number_format);
        EXPECT_EQ(h.last_name, c.holding.last_name) << c.number_format;
        EXPECT_EQ(h.first_name, c.holding.first_name) << c.number_format;
        EXPECT_EQ(h.medical_id, c.holding.medical_id) << c.number_format;
        EXPECT_EQ(h.thresh, c.holding.thresh) << c.number_format;
        EXPECT_EQ(h.duration, c.holding.duration) << c.number_format;
        EXPECT_EQ(h.max_y, c.holding.max_y) << c.number_format;
        EXPECT_EQ(h.trigger, c.holding.trigger) << c.number_format;
        EXPECT_EQ(h.gating, c.holding.gating) << c.number_format;
        EXPECT_EQ(h.x_scale_factor, c.holding.x_scale_factor) << c.number_format;
        EXPECT_EQ(h.max_x, c.holding.max_x) << c.number_format;
    }
}

TEST_F(PatientFile, converts_hand_made_values_by_the_system_rules) {
    struct Case {
        const char* duration;
        const char* trigger;
        const char* gated;
        int16_t expected_duration;
        const char* expected_trigger;
    };
    const Case cases[] = {
        {" 12.5 ", "True", "False", 12, "True"},  // ties go to the even neighbour
        {" 13.5 ", "true", "False", 14, "True"},
        {"12.4", "0", "yes", 12, "False"},  // the gating text is kept as it stands
        {" -2.5 ", " -1 ", "", -2, "True"},
    };
    for (const auto& c : cases) {
        QStringList lines = sound_lines();
        lines[7] = QStringLiteral("Breath Hold Duration:") + c.duration;
        lines[9] = QStringLiteral("Trigger on Inhale:") + c.trigger;
        lines[12] = QStringLiteral("Gated:") + c.gated;
        const PatientFileReading reading = read(hand_made(lines));
        ASSERT_EQ(reading.verdict, PatientFileVerdict::accepted) << c.duration;
        EXPECT_EQ(reading.holding.duration, c.expected_duration) << c.duration;
        EXPECT_EQ(reading.holding.trigger, c.expected_trigger) << c.trigger;
        EXPECT_EQ(reading.holding.gating, c.gated) << c.gated;
    }
}

TEST_F(PatientFile, load_stops_at_the_first_test_that_fails) {
    const auto spoiled = [](int index, const char* text) {
        QStringList lines = sound_lines();
        lines[index] = QString::fromLatin1(text);
        return lines;
    };
    struct Case {
        const char* name;
        std::function<QString()> make;
        PatientFileVerdict verdict;
        const char* found_number_format;
    };
    const Case cases[] = {
        {"companion deleted",
         [&] {
             const QString path = patient_path();
             EXPECT_TRUE(write_patient_files(path, sound_lines()));
             QFile::remove(companion_path(path));
             return path;
         },
         PatientFileVerdict::corrupt, ""},
        {"edited after writing",
         [&] {
             const QString path = patient_path();
             EXPECT_TRUE(write_patient_files(path, sound_lines()));
             QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
             QFile file(path);
             EXPECT_TRUE(file.open(QIODevice::WriteOnly));
             file.write(crlf(spoiled(6, "Threshold:0.20")));
             return path;
         },
         PatientFileVerdict::corrupt, ""},
        {"companion in lower case",
         [&] {
             const QString path = hand_made(sound_lines());
             QFile file(companion_path(path));
             EXPECT_TRUE(file.open(QIODevice::WriteOnly));
             file.write("CRC:" + crc_hex(CalculateCRC(path)).toLower().toLatin1() + "\r\n");
             return path;
         },
         PatientFileVerdict::corrupt, ""},
        // An unrelated file ends at the CRC, before any of its lines is read.
        {"unrelated file without companion",
         [&] {
             const QString path = hand_made(QByteArray("just some notes\r\n"));
             QFile::remove(companion_path(path));
             return path;
         },
         PatientFileVerdict::corrupt, ""},
        {"unrelated file of one line", [&] { return hand_made(QByteArray("notes")); },
         PatientFileVerdict::not_a_patient_file, ""},
        {"another stamp", [&] { return hand_made(spoiled(0, "ZEL System Parameter File")); },
         PatientFileVerdict::not_a_patient_file, ""},
        {"older version", [&] { return hand_made(spoiled(1, "2.01.07")); },
         PatientFileVerdict::wrong_version, ""},
        {"newer version", [&] { return hand_made(spoiled(1, "3.00.02")); },
         PatientFileVerdict::wrong_version, ""},
        {"version with a blank", [&] { return hand_made(spoiled(1, "3.00.01 ")); },
         PatientFileVerdict::wrong_version, ""},
        {"comma file on a dot system",
         [&] { return hand_made(spoiled(13, "Number Format:comma")); },
         PatientFileVerdict::number_format_differs, "comma"},
        {"folder named .zel",
         [&] {
             const QString path = path_in("old.zel");
             QFile file(path);
             EXPECT_TRUE(file.open(QIODevice::WriteOnly));
             file.write(crlf(sound_lines()));
             file.close();
             // A companion beside it, where a path with the folder's name unchanged would look.
             EXPECT_TRUE(
                 write_crc_companion(dir.path() + "/old.zel/Smith.sfv", CalculateCRC(path)));
             return path;
         },
         PatientFileVerdict::corrupt, ""},
    };
    for (const auto& c : cases) {
        const QString path = c.make();
        const PatientFileReading reading = read(path);
        EXPECT_EQ(reading.verdict, c.verdict) << c.name;
        EXPECT_EQ(reading.found_number_format, c.found_number_format) << c.name;
        QDir(dir.path()).removeRecursively();
        QDir().mkpath(dir.path());
    }
}

TEST_F(PatientFile, load_fails_with_the_number_of_what_went_wrong) {
    QStringList short_file = sound_lines();
    short_file.removeLast();
    QStringList short_comma_file = short_file;
    short_comma_file.removeLast();
    short_comma_file.append("Number Format:comma");
    QStringList text_for_number = sound_lines();
    text_for_number[6] = "Threshold:high";
    QStringList too_long = sound_lines();
    too_long[7] = "Breath Hold Duration: 40000 ";
    QStringList not_boolean = sound_lines();
    not_boolean[9] = "Trigger on Inhale:Yes";

    struct Case {
        const char* name;
        std::function<QString()> make;
        int number;
    };
    const Case cases[] = {
        {"thirteen lines", [&] { return hand_made(short_file); }, err_input_past_end},
        // The lines are all read before the number format is looked at.
        {"thirteen lines, other format", [&] { return hand_made(short_comma_file); },
         err_input_past_end},
        {"text for a number", [&] { return hand_made(text_for_number); }, err_type_mismatch},
        {"not a boolean", [&] { return hand_made(not_boolean); }, err_type_mismatch},
        {"duration beyond 16 bits", [&] { return hand_made(too_long); }, err_overflow},
        {"empty companion",
         [&] {
             const QString path = hand_made(sound_lines());
             QFile file(companion_path(path));
             EXPECT_TRUE(file.open(QIODevice::WriteOnly));
             return path;
         },
         err_input_past_end},
        {"chosen file missing", [&] { return dir.path() + "/Smith_John_12345/Jones.zel"; },
         err_file_not_found},
    };
    for (const auto& c : cases) {
        const QString path = c.make();
        EXPECT_EQ(error_number([&] { read(path); }), c.number) << c.name;
    }
}

}  // namespace
}  // namespace zel
