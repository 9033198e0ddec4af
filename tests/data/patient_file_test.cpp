// A patient's files: the parameter file and its CRC companion, their checksum, and the
// quarantine of a patient that fails its load.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <functional>
#include <map>
#include <random>
#include <span>
#include <tuple>
#include <vector>

#include "app/zel_error.h"
#include "data/binary_file_stream.h"
#include "data/crc32.h"
#include "data/crc_companion.h"
#include "data/patient_file.h"
#include "data/quarantine.h"
#include "fakes/files.h"
#include "fakes/qt_printers.h"

namespace zel {
namespace {

using namespace test;

const QString stamp = QStringLiteral("ZEL Patient Parameter File");
const QString version = QStringLiteral("3.00.01");
const QString date = QStringLiteral("11/22/2024");

PatientParameters smith() {
    return {"Smith", "John", "12345", 1.2f, 12, 2.5, true, 1, 1000, false};
}

QByteArray crlf_lines(const QStringList& lines) { return crlf((lines.join('|') + '|').toLatin1()); }

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

const int32_t crc_of_nine = static_cast<int32_t>(0xCBF43926u);  // of "123456789"

int32_t zlib_crc(const QByteArray& bytes) {
    const auto crc = crc32(0L, reinterpret_cast<const Bytef*>(bytes.constData()), bytes.size());
    return static_cast<int32_t>(static_cast<uint32_t>(crc));
}

const QString quarantine_name = QStringLiteral("Quarantine - NOT FOR CLINICAL USE");

class PatientFiles : public ::testing::Test {
  protected:
    QString made(const QString& n, const QByteArray& b) { return write(dir.filePath(n), b); }
    QString path_in(const QString& folder) {
        QDir(dir.path()).mkpath(folder);
        return dir.path() + QLatin1Char('/') + folder + QStringLiteral("/Smith.zel");
    }
    QString patient_path() { return path_in(QStringLiteral("Smith_John_12345")); }

    // A file of any contents with a companion that matches it, as if written by the console.
    QString hand_made(const QByteArray& bytes) {
        const QString path = write(patient_path(), bytes);
        EXPECT_TRUE(write_crc_companion(companion_path(path), CalculateCRC(path)));
        return path;
    }

    PatientFileReading read(const QString& path, const char* number_format = "dot") {
        return read_patient_file(path, stamp, version, QString::fromLatin1(number_format));
    }

    QTemporaryDir dir;
};
using CrcFiles = PatientFiles;
using PatientFile = PatientFiles;
using Quarantine = PatientFiles;

// Files, and byte arrays up to their 16-bit index, agree with zlib around the chunk size.
TEST_F(CrcFiles, agree_with_zlib_around_the_chunk_size) {
    const cCRC32 crc;
    for (const int size : {0, 1, 8191, 8192, 8193, 16384, 32767, 32768}) {
        std::mt19937 generator(static_cast<unsigned>(size));
        QByteArray bytes(size, Qt::Uninitialized);
        for (char& b : bytes) b = static_cast<char>(generator() & 0xFF);
        EXPECT_EQ(CalculateCRC(made(QString::number(size), bytes)), zlib_crc(bytes)) << size;
        const std::vector<uint8_t> array(bytes.begin(), bytes.end());
        if (size < 32768)
            EXPECT_EQ(crc.GetByteArrayCrc32(array), zlib_crc(bytes)) << size;
        else
            EXPECT_THROW(crc.GetByteArrayCrc32(array), ZelError);
    }
    const std::vector<uint8_t> nine{'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(crc.GetByteArrayCrc32(nine, -5), crc_of_nine) << "a lower bound below 0";
}

TEST_F(CrcFiles, read_delivers_chunks_and_keeps_the_rest_of_the_buffer) {
    const std::pair<int, std::vector<int32_t>> cases[] = {
        {0, {0}}, {8191, {8191, 0}}, {8192, {8192, 0}}, {8193, {8192, 1, 0}}};
    for (const auto& [size, deliveries] : cases) {
        cBinaryFileStream stream;
        stream.file(made(QString::number(size), QByteArray(size, 'a')));
        EXPECT_EQ(stream.Length(), size);
        std::vector<uint8_t> buffer(8192, 0xEE);
        for (int32_t expected : deliveries) EXPECT_EQ(stream.Read(buffer, 8192), expected) << size;
        EXPECT_EQ(stream.file_number, 0) << "the read that finds nothing closes the file";
        EXPECT_EQ(buffer[1], size == 0 ? 0xEE : 'a') << "old contents stay behind";
    }
}

// ".Doe.zel" was once taken for a hidden file: its CRC failed and the patient could not load.
// A file another program holds locked for writing is in use: permission denied, not a broken
// file.
TEST_F(CrcFiles, fail_as_denied_when_locked_and_not_found_when_missing_and_read_otherwise) {
    QDir(dir.path()).mkdir("folder");
    for (const char* name : {"locked", ".Doe.zel"})
        QFile::setPermissions(made(name, "123456789"), QFileDevice::ReadOwner);
    const QString busy = made("busy.zel", "123456789");
    const int writer = ::open(QFile::encodeName(busy).constData(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(writer, 0);
    ASSERT_EQ(::flock(writer, LOCK_EX | LOCK_NB), 0);
    const std::pair<const char*, int> cases[] = {
        {"locked", 0}, {".Doe.zel", 0}, {"busy.zel", err_permission_denied},
        {"absent", err_file_not_found}, {"folder", err_file_not_found},
        {"nodir/absent", err_file_not_found}};
    for (const auto& [name, error] : cases) {
        try {
            EXPECT_EQ(CalculateCRC(dir.filePath(name)), crc_of_nine) << name;
            EXPECT_EQ(error, 0) << name;
        } catch (const ZelError& e) {
            EXPECT_EQ(e.number, error) << name;
            EXPECT_TRUE(e.source.endsWith(".File")) << e.source.toStdString();
        }
    }
    ::close(writer);
    EXPECT_EQ(CalculateCRC(busy), crc_of_nine);
}

TEST_F(CrcFiles, companion_is_replaced_whole) {
    const QString path = made("p.sfv", "CRC:OLD AND LONGER THAN THE NEW ONE\r\n");
    ASSERT_TRUE(write_crc_companion(path, static_cast<int32_t>(0x00D2E4F6u)));
    EXPECT_EQ(contents(path), "CRC:D2E4F6\r\n");
}

// The second row is written over the read-only file of the first. In the table "|" stands for
// CR LF. The threshold rounds to two places; a minus takes the sign's place.
TEST_F(PatientFile, is_written_whole_left_read_only_followed_by_its_companion_and_read_back) {
    const PatientParameters comma{"M\u00fcller:Jr", "A:B", "ID:007", 1.234f, -15.5, 3.25, false,
                                  1.5f, 1234.5, true};
    struct Case { const char* format; char separator; PatientParameters parameters; QByteArray file;
                  PatientHolding holding; };
    const Case cases[] = {
        {"dot", '.', smith(),
         "ZEL Patient Parameter File|3.00.01|Patient Last Name:Smith|Patient First Name:John|"
         "Patient Medical ID:12345|Date:11/22/2024|Threshold:1.20|Breath Hold Duration: 12 |"
         "Y-Scale Range: 2.5 |Trigger on Inhale:True|X-Axis Scale: 1 |X-Axis length: 1000 |"
         "Gated:False|Number Format:dot|",
         {"Smith", "John", "12345", 1.2f, 12, 2.5f, "True", "False", 1, 1000}},
        {"comma", ',', comma,
         "ZEL Patient Parameter File|3.00.01|Patient Last Name:M\xFCller:Jr|Patient First Name:A:B|"
         "Patient Medical ID:ID:007|Date:11/22/2024|Threshold:1,23|Breath Hold Duration:-15,5 |"
         "Y-Scale Range: 3,25 |Trigger on Inhale:False|X-Axis Scale: 1,5 |X-Axis length: 1234,5 |"
         "Gated:True|Number Format:comma|",
         {"M\u00fcller:Jr", "A:B", "ID:007", 1.23f, -16, 3.25f, "False", "True", 1.5f, 1234.5}},
    };
    const QString path = patient_path();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.format);
        ASSERT_TRUE(write_patient_files(path, lines_of(c.parameters, c.format, c.separator)));
        EXPECT_EQ(contents(path), crlf(c.file));
        EXPECT_TRUE(is_read_only(path));
        EXPECT_EQ(contents(companion_path(path)), crc_companion_line(CalculateCRC(path)));
        EXPECT_FALSE(is_read_only(companion_path(path)));
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
    };
    for (const auto& [path, lines] : cases)
        EXPECT_FALSE(write_patient_files(path, lines)) << path.toStdString();
    EXPECT_FALSE(QFileInfo::exists(patient_path()));
}

TEST_F(PatientFile, converts_hand_made_values_by_the_system_rules) {
    struct Case { const char *duration, *trigger, *gated; int16_t to_duration;
                  const char* to_trigger; };
    const Case cases[] = {
        // Ties go to the even neighbour; the gating text is kept as it stands.
        {" 12.5 ", "True", "False", 12, "True"}, {" 13.5 ", "true", "False", 14, "True"},
        {"12.4", "0", "yes", 12, "False"},       {" -2.5 ", " -1 ", "", -2, "True"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.duration);
        QStringList lines = lines_of(smith());
        lines[7] = QStringLiteral("Breath Hold Duration:") + c.duration;
        lines[9] = QStringLiteral("Trigger on Inhale:") + c.trigger;
        lines[12] = QStringLiteral("Gated:") + c.gated;
        const PatientFileReading reading = read(hand_made(crlf_lines(lines)));
        ASSERT_EQ(reading.verdict, PatientFileVerdict::accepted);
        const PatientHolding& h = reading.holding;
        EXPECT_EQ(std::tuple(h.duration, h.trigger, h.gating),
                  std::tuple(c.to_duration, QString(c.to_trigger), QString(c.gated)));
    }
}

// The tests of a load in their order: the CRC, the stamp, the version, the number format, then
// each line read and converted. A load that fails with a number leaves no verdict (corrupt).
TEST_F(PatientFile, load_stops_at_the_first_test_that_fails) {
    using Spoil = std::function<QString(const QString&)>;  // the file made -> the file read
    const auto no_companion = [](const QString& p) { return QFile::remove(companion_path(p)), p; };
    const QByteArray sound = crlf_lines(lines_of(smith()));
    const auto with = [&](const char* a, const char* b) { return QByteArray(sound).replace(a, b); };
    struct Case { const char* name; QByteArray file; PatientFileVerdict verdict; int error = 0;
                  const char* found_number_format = ""; Spoil spoil = {}; };
    using enum PatientFileVerdict;
    const Case cases[] = {
        {"sound", sound, accepted, 0, "dot"},
        {"companion deleted", sound, corrupt, 0, "", no_companion},
        {"edited after writing", sound, corrupt, 0, "",
         [&](const QString& path) { return write(path, with("1.20", "0.20")), path; }},
        {"companion in lower case", sound, corrupt, 0, "", [](const QString& path) {
             const QByteArray hex = crc_hex(CalculateCRC(path)).toLower().toLatin1();
             return write(companion_path(path), "CRC:" + hex + "\r\n"), path;
         }},
        // An unrelated file ends at the CRC, before any of its lines is read.
        {"unrelated file without companion", "just some notes\r\n", corrupt, 0, "", no_companion},
        {"unrelated file of one line", "notes", not_a_patient_file},
        {"another stamp", with("Patient Parameter", "System Parameter"), not_a_patient_file},
        {"older version", with("3.00.01", "2.01.07"), wrong_version},
        {"newer version", with("3.00.01", "3.00.02"), wrong_version},
        {"version with a blank", with("3.00.01", "3.00.01 "), wrong_version},
        {"comma file on a dot system", with("Format:dot", "Format:comma"), number_format_differs, 0,
         "comma"},
        // Only the name's ending makes the companion's: folders named like files are ordinary.
        {"folder named .zel.dat", sound, accepted, 0, "dot", [this](const QString& path) {
             const QString moved = path_in("site.zel.dat");
             EXPECT_TRUE(QFile::rename(path, moved));
             EXPECT_TRUE(QFile::rename(companion_path(path), companion_path(moved)));
             return moved;
         }},
        {"thirteen lines", with("Number Format:dot\r\n", ""), corrupt, err_input_past_end},
        // The lines are all read before the number format is looked at.
        {"thirteen lines, other format",
         with("False\r\nNumber Format:dot", "Number Format:comma"), corrupt, err_input_past_end},
        {"text for a number", with("Threshold:1.20", "Threshold:high"), corrupt, err_type_mismatch},
        {"not a boolean", with("Inhale:True", "Inhale:Yes"), corrupt, err_type_mismatch},
        {"duration beyond 16 bits", with("Duration: 12 ", "Duration: 40000 "), corrupt,
         err_overflow},
        {"empty companion", sound, corrupt, err_input_past_end, "",
         [](const QString& p) { return write(companion_path(p), ""), p; }},
        {"chosen file missing", sound, corrupt, err_file_not_found, "",
         [](const QString& path) { return QFileInfo(path).path() + "/Jones.zel"; }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString made = hand_made(c.file), path = c.spoil ? c.spoil(made) : made;
        PatientFileReading reading;
        EXPECT_EQ(error_of([&] { reading = read(path); }), c.error);
        EXPECT_EQ(std::tuple(reading.verdict, reading.found_number_format),
                  std::tuple(c.verdict, QString(c.found_number_format)));
    }
}

// Files of a case, under its own folder: "X.zel" a patient of another release named X, John, 1,
// with its companion; "!X" a file of its path's text; "?X" none; "X/" a folder; "X|" a pipe;
// "X->" a link to a folder on another file system. A "Q" in a path is the quarantine folder.
QString at(const QString& root, const QString& path) {
    QStringList parts = path.split('/');
    for (QString& part : parts)
        if (part == "Q") part = quarantine_name;
    return root + '/' + parts.join('/');
}

QString make(const QString& root, const QString& item, const QString& other_file_system) {
    const QChar kind = item.startsWith('!') || item.startsWith('?') ? item[0] : item.back();
    const QString path = at(root, item.mid(kind == '!' || kind == '?' ? 1 : 0)
                                      .chopped(kind == '|' ? 1 : kind == '>' ? 2 : 0));
    QDir().mkpath(QFileInfo(path).path());
    if (kind == '?') return path;
    if (kind == '/') {
        QDir().mkpath(path);
    } else if (kind == '|') {
        ::mkfifo(QFile::encodeName(path).constData(), 0600);
    } else if (kind == '>') {
        QDir().mkpath(other_file_system);
        QFile::link(other_file_system, path);
    } else if (item.endsWith(".zel") && kind != '!') {
        const PatientParameters p{QFileInfo(path).completeBaseName(), "John", "1"};
        write_patient_files(path, patient_file_lines(stamp, "2.01.07", p, date, "dot", '.'));
    } else {
        write(path, item.toLatin1());
    }
    return path;
}

// Only the patient moves: its own folder whole, else its file and companion alone, and every
// other file stays byte for byte.
TEST_F(Quarantine, moves_one_patient_and_its_folder_only_when_the_folder_is_its_own) {
    struct Case {
        const char* name; std::vector<QString> files;  // the first is the patient chosen
        QString from, to;  // "X/" the folder moved whole; "X" the stem of the two files moved
        QString data = "data"; int numbered = 0;  // "Q/Smith_John_1" and "( 2)" to "( n)" taken
    };
    const QString own = "data/Smith_John_1/Smith.zel", curve = "data/Smith_John_1/curves/1.dat";
    const QString folder = "data/Smith_John_1/", quarantined = "data/Q/Smith_John_1/";
    std::vector<Case> cases = {
        {"its own folder", {own, curve, "data/Jones_John_1/Jones.zel"}, folder, quarantined},
        {"numbered", {own, curve}, folder, "data/Q/Smith_John_1( 4)/", "data", 3},
        {"last number", {own}, folder, "data/Q/Smith_John_1( 100)/", "data", 99},
        {"all numbers taken", {own}, folder, "data/Q/Smith_John_1( 0)/", "data", 100},
        {"( 0) taken too: thrown", {own}, "", "", "data", 101},
        {"a stray in downloads", {"Downloads/Smith.zel", "Downloads/notes.txt", "Downloads/old/a"},
         "Downloads/Smith", "Downloads/Q/Smith_John_1/Smith"},
        {"in the data directory", {"data/Smith.zel", "data/session.ini", "data/Jones_John_1/J.zel"},
         "data/Smith", "data/Q/Smith_John_1/Smith"},
        {"one patient's files", {"usb/copy/Smith.zel", "usb/copy/session.ini",
         "usb/copy/Smith_1.dat", "usb/copy/Smith.zel.new-Ab12Cd"}, "usb/copy/", "usb/Q/copy/"},
        {"with a folder", {"usb/copy/Smith.zel", "usb/copy/session.ini", "usb/copy/old/"},
         "usb/copy/Smith", "usb/copy/Q/Smith_John_1/Smith"},
        {"with a second patient", {"usb/copy/Smith.zel", "usb/copy/Jones.zel"}, "usb/copy/Smith",
         "usb/copy/Q/Smith_John_1/Smith"},
        {"no name lines", {"!Downloads/notes.zel", "Downloads/a"}, "Downloads/notes",
         "Downloads/Q/notes/notes"},
        {"quarantined already", {"data/Q/Smith_John_1/Smith.zel"}, "", ""},
        {"lying in the quarantine", {"data/Q/Smith.zel", "data/Q/Jones_John_1/Jones.zel"}, "", ""},
        {"the data directory named as it", {"Smith_John_1/Smith.zel"}, "Smith_John_1/Smith",
         "Smith_John_1/Q/Smith_John_1/Smith", "Smith_John_1"},
        {"named as it, holding the data", {"Smith_John_1/Smith.zel", "Smith_John_1/data/"},
         "Smith_John_1/Smith", "Smith_John_1/Q/Smith_John_1/Smith", "Smith_John_1/data"},
        {"the home folder", {"home/Smith.zel"}, "home/Smith", "home/Q/Smith_John_1/Smith"},
        {"missing", {"?" + own}, "", ""},
    };
    // The quarantine on another file system: copied, synchronised, compared, then removed.
    QTemporaryDir elsewhere(QStringLiteral("/dev/shm/zel-XXXXXX"));
    struct stat here {};
    struct stat there {};
    if (elsewhere.isValid() && ::stat(QFile::encodeName(dir.path()), &here) == 0 &&
        ::stat(QFile::encodeName(elsewhere.path()), &there) == 0 && here.st_dev != there.st_dev) {
        cases.push_back({"its folder across", {own, "data/Q->", curve}, folder, quarantined});
        cases.push_back({"a stray across", {"Downloads/Smith.zel", "Downloads/Q->", "Downloads/a"},
                         "Downloads/Smith", "Downloads/Q/Smith_John_1/Smith"});
        cases.push_back({"a pipe can't be copied", {own, "data/Q->", folder + "pipe|"}, "", ""});
    } else {
        ADD_FAILURE() << "no second file system at /dev/shm: the copy is not tried";
    }
    const QString home = qEnvironmentVariable("HOME");
    for (size_t k = 0; k < cases.size(); ++k) {
        const Case& c = cases[k];
        SCOPED_TRACE(c.name);
        const QString root = dir.path() + QStringLiteral("/%1").arg(k);
        qputenv("HOME", QFile::encodeName(root + "/home"));
        QDir().mkpath(at(root, c.data));
        const QString chosen = make(root, c.files[0], {});
        for (const QString& f : std::span(c.files).subspan(1))
            make(root, f, elsewhere.path() + '/' + QString::number(k));
        if (c.numbered) make(root, "data/Q/Smith_John_1/session.ini", {});
        for (int i = 2; i <= c.numbered; ++i)
            QDir().mkpath(at(root, QStringLiteral("data/Q/Smith_John_1( %1)").arg(i % 101)));
        std::map<QString, QByteArray> expected;
        const QString from = at("", c.from).mid(1), to = at("", c.to).mid(1);
        for (const auto& [path, bytes] : tree(root)) {
            const bool moves = !c.from.isEmpty() && (c.from.endsWith('/') ? path.startsWith(from)
                                                         : path.chopped(4) == from);
            expected[moves ? to + path.mid(from.size()) : path] = bytes;
        }
        EXPECT_EQ(error_of([&] { quarantine_patient(chosen, quarantine_name, at(root, c.data)); }),
                  c.numbered > 100 ? err_path_file_access : 0);
        EXPECT_EQ(tree(root), expected);
        if (!c.from.isEmpty()) {
            EXPECT_FALSE(QFileInfo::exists(c.from.endsWith('/') ? at(root, c.from) : chosen));
        }
        // Nothing of a copy or of a removal stays behind.
        QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories | QDirIterator::FollowSymlinks);
        const QRegularExpression left_behind("\\.(incomplete|removing)");
        while (it.hasNext()) EXPECT_FALSE(it.next().contains(left_behind));
    }
    qputenv("HOME", QFile::encodeName(home));
}

// Deleting takes read-only files and folders. Only an unprivileged run sees the closed folders
// hold anything back; root removes them anyway.
TEST_F(Quarantine, delete_takes_read_only_files_and_folders) {
    const QString folder = dir.path() + QStringLiteral("/Smith_John_1");
    make(dir.path(), "Smith_John_1/curves/Smith.zel", {});
    for (const QString& closed : {folder + QStringLiteral("/curves"), folder})
        QFile::setPermissions(closed, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    delete_folder(folder + QLatin1Char('/'));
    EXPECT_FALSE(QFileInfo::exists(folder));
    delete_folder(folder);
    EXPECT_TRUE(QFileInfo::exists(dir.path()));
}

}  // namespace
}  // namespace zel
