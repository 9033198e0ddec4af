#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>
#include <zlib.h>

#include <QFile>
#include <QTemporaryDir>
#include <random>
#include <vector>

#include "app/zel_error.h"
#include "data/binary_file_stream.h"
#include "data/crc32.h"
#include "data/crc_companion.h"

namespace zel {
namespace {

QByteArray random_bytes(int size, unsigned seed) {
    std::mt19937 generator(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char& b : bytes) b = static_cast<char>(generator() & 0xFF);
    return bytes;
}

int32_t zlib_crc(const QByteArray& bytes) {
    const uLong crc = crc32(crc32(0L, Z_NULL, 0), reinterpret_cast<const Bytef*>(bytes.constData()),
                            static_cast<uInt>(bytes.size()));
    return static_cast<int32_t>(static_cast<uint32_t>(crc));
}

class CrcFiles : public ::testing::Test {
  protected:
    QString write(const QString& name, const QByteArray& bytes) {
        const QString path = dir.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return path;
    }
    QTemporaryDir dir;
};

TEST_F(CrcFiles, agree_with_zlib_around_the_chunk_size) {
    struct Case {
        int size;
    };
    const Case cases[] = {{0}, {1}, {8191}, {8192}, {8193}, {16384}, {100000}};
    for (const auto& c : cases) {
        const QByteArray bytes = random_bytes(c.size, static_cast<unsigned>(c.size));
        const QString path = write(QStringLiteral("f%1.bin").arg(c.size), bytes);
        EXPECT_EQ(CalculateCRC(path), zlib_crc(bytes)) << c.size;
    }
}

TEST_F(CrcFiles, check_value_and_empty_file_print_as_the_companion_holds_them) {
    EXPECT_EQ(crc_hex(CalculateCRC(write("nine", "123456789"))), "CBF43926");
    EXPECT_EQ(crc_hex(CalculateCRC(write("empty", ""))), "0");
}

TEST(CrcHex, is_upper_case_without_leading_zeros) {
    struct Case {
        uint32_t word;
        const char* text;
        const char* line;
    };
    const Case cases[] = {
        {0xCBF43926u, "CBF43926", "CRC:CBF43926\r\n"},
        {0x00D2E4F6u, "D2E4F6", "CRC:D2E4F6\r\n"},
        {0x80000000u, "80000000", "CRC:80000000\r\n"},
        {0xFFFFFFFFu, "FFFFFFFF", "CRC:FFFFFFFF\r\n"},
        {0x0000000Au, "A", "CRC:A\r\n"},
        {0u, "0", "CRC:0\r\n"},
    };
    for (const auto& c : cases) {
        const auto crc = static_cast<int32_t>(c.word);
        EXPECT_EQ(crc_hex(crc), QString::fromLatin1(c.text));
        EXPECT_EQ(crc_companion_line(crc), QByteArray(c.line));
    }
}

TEST(ByteArrayCrc, honours_the_lower_bound_and_the_16_bit_index) {
    const cCRC32 crc;
    const QByteArray nine("123456789");
    const std::vector<uint8_t> bytes(nine.begin(), nine.end());
    EXPECT_EQ(crc.GetByteArrayCrc32(bytes), static_cast<int32_t>(0xCBF43926u));
    EXPECT_EQ(crc.GetByteArrayCrc32(bytes, -5), static_cast<int32_t>(0xCBF43926u));
    EXPECT_EQ(crc.GetByteArrayCrc32({}), 0);

    const std::vector<uint8_t> up_to_32766(32767, 0x5A);
    const QByteArray same(32767, 0x5A);
    EXPECT_EQ(crc.GetByteArrayCrc32(up_to_32766), zlib_crc(same));
    const std::vector<uint8_t> up_to_32767(32768, 0x5A);
    EXPECT_THROW(crc.GetByteArrayCrc32(up_to_32767), ZelError);
}

TEST_F(CrcFiles, read_delivers_chunks_and_keeps_the_rest_of_the_buffer) {
    struct Case {
        int size;
        std::vector<int32_t> deliveries;
    };
    const Case cases[] = {
        {0, {0}},
        {8191, {8191, 0}},
        {8192, {8192, 0}},
        {8193, {8192, 1, 0}},
    };
    for (const auto& c : cases) {
        const QByteArray bytes(c.size, 'a');
        cBinaryFileStream stream;
        stream.file(write(QStringLiteral("r%1").arg(c.size), bytes));
        EXPECT_EQ(stream.Length(), c.size);
        std::vector<uint8_t> buffer(8192, 0xEE);
        for (int32_t expected : c.deliveries) EXPECT_EQ(stream.Read(buffer, 8192), expected);
        EXPECT_EQ(stream.file_number, 0) << "the read that finds nothing closes the file";
        if (c.size == 8193) {
            EXPECT_EQ(buffer[0], 'a');
            EXPECT_EQ(buffer[1], 'a') << "the old contents stay behind the last byte";
        }
    }
}

TEST_F(CrcFiles, a_second_file_on_one_stream_reads_short) {
    const QString first = write("first", QByteArray(10000, 'x'));
    const QByteArray second_bytes = random_bytes(20000, 7);
    const QString second = write("second", second_bytes);
    cBinaryFileStream stream;
    const cCRC32 crc;
    stream.file(first);
    crc.GetFileCrc32(stream);
    stream.file(second);
    EXPECT_EQ(stream.read_position, 10000);
    EXPECT_EQ(crc.GetFileCrc32(stream), zlib_crc(second_bytes.left(10000)));
}

TEST_F(CrcFiles, missing_and_folder_paths_fail_as_file_not_found) {
    QDir(dir.path()).mkdir("folder");
    const char* names[] = {"absent", "folder", "nodir/absent"};
    for (const char* name : names) {
        try {
            CalculateCRC(dir.filePath(name));
            ADD_FAILURE() << name;
        } catch (const ZelError& e) {
            EXPECT_EQ(e.number, err_file_not_found) << name;
            EXPECT_TRUE(e.source.endsWith(".File")) << e.source.toStdString();
        }
    }
}

// A file another program holds locked for writing is in use: permission denied, not a broken
// file.
TEST_F(CrcFiles, a_file_locked_by_a_writer_fails_as_permission_denied) {
    const QString path = write("busy.zel", "123456789");
    const int writer = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(writer, 0);
    ASSERT_EQ(::flock(writer, LOCK_EX | LOCK_NB), 0);
    try {
        CalculateCRC(path);
        ADD_FAILURE() << "read while locked";
    } catch (const ZelError& e) {
        EXPECT_EQ(e.number, err_permission_denied);
    }
    ::close(writer);
    EXPECT_EQ(CalculateCRC(path), static_cast<int32_t>(0xCBF43926u));
}

// ".Doe.zel" was once taken for a hidden file: its CRC failed and the patient could not load.
TEST_F(CrcFiles, read_only_and_dot_named_files_read_like_any_other) {
    for (const char* name : {"locked", ".Doe.zel"}) {
        const QString path = write(name, "123456789");
        QFile::setPermissions(path, QFileDevice::ReadOwner);
        EXPECT_EQ(CalculateCRC(path), static_cast<int32_t>(0xCBF43926u)) << name;
    }
}

TEST_F(CrcFiles, companion_is_replaced_whole) {
    const QString path = write("p.sfv", "CRC:OLD AND LONGER THAN THE NEW ONE\r\n");
    ASSERT_TRUE(write_crc_companion(path, static_cast<int32_t>(0x00D2E4F6u)));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("CRC:D2E4F6\r\n"));
}

}  // namespace
}  // namespace zel
