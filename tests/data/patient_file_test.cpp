#include "data/patient_file.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <functional>
#include <tuple>

#include "app/zel_error.h"
#include "data/crc_companion.h"
#include "fakes/qt_printers.h"

namespace zel {
namespace {

const QString stamp = QStringLiteral("ZEL Patient Parameter File");
const QString version = QStringLiteral("3.00.01");
const QString date = QStringLiteral("11/22/2024");

PatientParameters smith() {
    return {"Smith", "John", "12345", 1.2f, 12, 2.5, true, 1, 1000, false};
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

void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    file.write(bytes);
}

// By the file's mode: a test run as root may write anything, so the "User" flags don't tell.
bool is_read_only(const QString& path) {
    return !(QFile::permissions(path) &
             (QFileDevice::WriteOwner | QFileDevice::WriteGroup | QFileDevice::WriteOther));
}

QStringList lines_of(const PatientParameters& p, const char* format = "dot", char separator = '.') {
    return patient_file_lines(stamp, version, p, date, format, QLatin1Char(separator));
}

auto fields(const PatientHolding& h) {
    return std::tuple(h.last_name, h.first_name, h.medical_id, h.thresh, h.duration, h.max_y,
                      h.trigger, h.gating, h.x_scale_factor, h.max_x);
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
        write(path, bytes);
        EXPECT_TRUE(write_crc_companion(companion_path(path), CalculateCRC(path)));
        return path;
    }

    PatientFileReading read(const QString& path, const char* number_format = "dot") {
        return read_patient_file(path, stamp, version, QString::fromLatin1(number_format));
    }

    QTemporaryDir dir;
};

// The dot system's lines are seen byte for byte in the written file below.
TEST(PatientFileLines, hold_the_values_in_the_comma_system_form) {
    // The threshold rounds to two places; a minus takes the sign's place.
    const PatientParameters p{"M\u00fcller", "A:B", "12345", 1.234f, -15.5, 2.5, false, 1.5f,
                              1234.5, true};
    EXPECT_EQ(lines_of(p, "comma", ','),
              QStringList({"ZEL Patient Parameter File", "3.00.01",
                           QStringLiteral("Patient Last Name:M\u00fcller"),
                           "Patient First Name:A:B", "Patient Medical ID:12345", "Date:11/22/2024",
                           "Threshold:1,23", "Breath Hold Duration:-15,5 ", "Y-Scale Range: 2,5 ",
                           "Trigger on Inhale:False", "X-Axis Scale: 1,5 ",
                           "X-Axis length: 1234,5 ", "Gated:True", "Number Format:comma"}));
}

TEST(PatientFilePaths, name_the_folder_by_the_patient_and_the_file_by_the_last_name) {
    EXPECT_EQ(patient_folder("/data", "Smith", "John", "12345"), "/data/Smith_John_12345");
    EXPECT_EQ(patient_file_path("/data", "Smith", "John", "12345"),
              "/data/Smith_John_12345/Smith.zel");
    const char* cases[][2] = {
        {"/data/Smith_John_1/Smith.zel", "/data/Smith_John_1/Smith.sfv"},
        {"/data/Smith_John_1/Smith.ZEL", "/data/Smith_John_1/Smith.ZEL"},
        {"/data/old.zel/Smith_John_1/Smith.zel", "/data/old.sfv/Smith_John_1/Smith.sfv"},
    };
    for (const auto& c : cases) EXPECT_EQ(companion_path(c[0]), c[1]) << c[0];
}

// The second row is written over the read-only file of the first.
TEST_F(PatientFile, is_written_whole_left_read_only_followed_by_its_companion_and_read_back) {
    const QString path = patient_path();
    ASSERT_TRUE(write_patient_files(path, lines_of(smith())));
    EXPECT_EQ(contents(path),
              "ZEL Patient Parameter File\r\n3.00.01\r\nPatient Last Name:Smith\r\n"
              "Patient First Name:John\r\nPatient Medical ID:12345\r\nDate:11/22/2024\r\n"
              "Threshold:1.20\r\nBreath Hold Duration: 12 \r\nY-Scale Range: 2.5 \r\n"
              "Trigger on Inhale:True\r\nX-Axis Scale: 1 \r\nX-Axis length: 1000 \r\n"
              "Gated:False\r\nNumber Format:dot\r\n");
    const PatientParameters comma{"O'Neil:Jr", "A:B", "ID:007", 1.234f, 20, 3.25, false, 1.5f,
                                  1234.5, true};
    struct Case { const char* format; char separator; PatientParameters parameters; PatientHolding holding; };
    const Case cases[] = {
        {"dot", '.', smith(), {"Smith", "John", "12345", 1.2f, 12, 2.5f, "True", "False", 1, 1000}},
        {"comma", ',', comma,
         {"O'Neil:Jr", "A:B", "ID:007", 1.23f, 20, 3.25f, "False", "True", 1.5f, 1234.5}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.format);
        const QStringList lines = lines_of(c.parameters, c.format, c.separator);
        ASSERT_TRUE(write_patient_files(path, lines));
        EXPECT_EQ(contents(path), crlf(lines));
        EXPECT_TRUE(is_read_only(path));
        const QString sfv = companion_path(path);
        EXPECT_EQ(contents(sfv), crc_companion_line(CalculateCRC(path)));
        EXPECT_FALSE(is_read_only(sfv));
        EXPECT_EQ(QDir(QFileInfo(path).path()).entryList(QDir::Files | QDir::Hidden),
                  QStringList({"Smith.sfv", "Smith.zel"}));
        const PatientFileReading reading = read(path, c.format);
        ASSERT_EQ(reading.verdict, PatientFileVerdict::accepted);
        EXPECT_EQ(reading.found_number_format, c.format);
        EXPECT_EQ(fields(reading.holding), fields(c.holding));
    }
}

TEST_F(PatientFile, write_fails_where_nothing_could_read_it_back) {
    QStringList foreign = lines_of(smith());
    foreign[2] = QStringLiteral("Patient Last Name:\u0141ukasz");
    const std::pair<QString, QStringList> cases[] = {
        {dir.path() + "/absent/Smith.zel", lines_of(smith())},
        {patient_path(), foreign},  // a name beyond Latin-1
        // The companion's path runs through a folder that doesn't exist.
        {path_in("old.zel"), lines_of(smith())},
    };
    for (const auto& [path, lines] : cases)
        EXPECT_FALSE(write_patient_files(path, lines)) << path.toStdString();
    EXPECT_FALSE(QFileInfo::exists(patient_path()));
}

TEST_F(PatientFile, converts_hand_made_values_by_the_system_rules) {
    struct Case { const char *duration, *trigger, *gated; int16_t to_duration; const char* to_trigger; };
    const Case cases[] = {
        {" 12.5 ", "True", "False", 12, "True"},  // ties go to the even neighbour
        {" 13.5 ", "true", "False", 14, "True"},
        {"12.4", "0", "yes", 12, "False"},  // the gating text is kept as it stands
        {" -2.5 ", " -1 ", "", -2, "True"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.duration);
        QStringList lines = lines_of(smith());
        lines[7] = QStringLiteral("Breath Hold Duration:") + c.duration;
        lines[9] = QStringLiteral("Trigger on Inhale:") + c.trigger;
        lines[12] = QStringLiteral("Gated:") + c.gated;
        const PatientFileReading reading = read(hand_made(crlf(lines)));
        ASSERT_EQ(reading.verdict, PatientFileVerdict::accepted);
        EXPECT_EQ(std::tuple(reading.holding.duration, reading.holding.trigger, reading.holding.gating),
                  std::tuple(c.to_duration, QString(c.to_trigger), QString(c.gated)));
    }
}

// The tests of a load in their order: the CRC, the stamp, the version, the number format, then
// each line read and converted.
TEST_F(PatientFile, load_stops_at_the_first_test_that_fails) {
    using Spoil = std::function<QString(const QString&)>;  // the file made -> the file read
    const auto companion = [](const QByteArray& text) {
        return [text](const QString& path) { return write(companion_path(path), text), path; };
    };
    const auto no_companion = [](const QString& path) {
        return QFile::remove(companion_path(path)), path;
    };
    const QByteArray sound = crlf(lines_of(smith()));
    const auto with = [&](const char* from, const char* to) { return QByteArray(sound).replace(from, to); };
    struct Case { const char* name; QByteArray file; Spoil spoil; PatientFileVerdict verdict;
                  int error = 0; const char* found_number_format = ""; };
    using enum PatientFileVerdict;
    const Case cases[] = {
        {"sound", sound, {}, accepted, 0, "dot"},
        {"companion deleted", sound, no_companion, corrupt},
        {"edited after writing", sound,
         [&](const QString& path) { return write(path, with("1.20", "0.20")), path; }, corrupt},
        {"companion in lower case", sound, [&](const QString& path) {
             return companion("CRC:" + crc_hex(CalculateCRC(path)).toLower().toLatin1() + "\r\n")(path);
         }, corrupt},
        // An unrelated file ends at the CRC, before any of its lines is read.
        {"unrelated file without companion", "just some notes\r\n", no_companion, corrupt},
        {"unrelated file of one line", "notes", {}, not_a_patient_file},
        {"another stamp", with("Patient Parameter", "System Parameter"), {}, not_a_patient_file},
        {"older version", with("3.00.01", "2.01.07"), {}, wrong_version},
        {"newer version", with("3.00.01", "3.00.02"), {}, wrong_version},
        {"version with a blank", with("3.00.01", "3.00.01 "), {}, wrong_version},
        {"comma file on a dot system", with("Format:dot", "Format:comma"), {},
         number_format_differs, 0, "comma"},
        {"folder named .zel", sound, [this](const QString& path) {
             // A companion beside it, where a path with the folder's name unchanged would look.
             const QString moved = path_in("old.zel");
             EXPECT_TRUE(QFile::rename(path, moved));
             EXPECT_TRUE(write_crc_companion(dir.path() + "/old.zel/Smith.sfv", CalculateCRC(moved)));
             return moved;
         }, corrupt},
        {"thirteen lines", with("Number Format:dot\r\n", ""), {}, accepted, err_input_past_end},
        // The lines are all read before the number format is looked at.
        {"thirteen lines, other format",
         with("Gated:False\r\nNumber Format:dot", "Number Format:comma"), {}, accepted,
         err_input_past_end},
        {"text for a number", with("Threshold:1.20", "Threshold:high"), {}, accepted,
         err_type_mismatch},
        {"not a boolean", with("Inhale:True", "Inhale:Yes"), {}, accepted, err_type_mismatch},
        {"duration beyond 16 bits", with("Duration: 12 ", "Duration: 40000 "), {}, accepted,
         err_overflow},
        {"empty companion", sound, companion(""), accepted, err_input_past_end},
        {"chosen file missing", sound,
         [](const QString& path) { return QFileInfo(path).path() + "/Jones.zel"; }, accepted,
         err_file_not_found},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString made = hand_made(c.file), path = c.spoil ? c.spoil(made) : made;
        try {
            const PatientFileReading reading = read(path);
            EXPECT_EQ(c.error, 0);
            EXPECT_EQ(std::tuple(reading.verdict, reading.found_number_format),
                      std::tuple(c.verdict, QString(c.found_number_format)));
        } catch (const ZelError& e) {
            EXPECT_EQ(e.number, c.error);
        }
    }
}

}  // namespace
}  // namespace zel
