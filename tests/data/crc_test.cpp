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

const int32_t crc_of_nine = static_cast<int32_t>(0xCBF43926u);  // of "123456789"

int32_t zlib_crc(const QByteArray& bytes) {
    return static_cast<int32_t>(static_cast<uint32_t>(
        crc32(0L, reinterpret_cast<const Bytef*>(bytes.constData()), static_cast<uInt>(bytes.size()))));
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
    for (const int size : {0, 1, 8191, 8192, 8193, 16384, 100000}) {
        std::mt19937 generator(static_cast<unsigned>(size));
        QByteArray bytes(size, Qt::Uninitialized);
        for (char& b : bytes) b = static_cast<char>(generator() & 0xFF);
        EXPECT_EQ(CalculateCRC(write(QString::number(size), bytes)), zlib_crc(bytes)) << size;
    }
}

// Upper case without leading zeros, as the companion holds it.
TEST(CrcHex, is_upper_case_without_leading_zeros) {
    const std::pair<uint32_t, const char*> cases[] = {
        {0xCBF43926u, "CBF43926"}, {0x00D2E4F6u, "D2E4F6"}, {0x80000000u, "80000000"},
        {0xFFFFFFFFu, "FFFFFFFF"}, {0x0000000Au, "A"},      {0u, "0"}};
    for (const auto& [word, text] : cases) {
        EXPECT_EQ(crc_hex(static_cast<int32_t>(word)), QString::fromLatin1(text));
        EXPECT_EQ(crc_companion_line(static_cast<int32_t>(word)), "CRC:" + QByteArray(text) + "\r\n");
    }
}

TEST(ByteArrayCrc, honours_the_lower_bound_and_the_16_bit_index) {
    const cCRC32 crc;
    const std::vector<uint8_t> nine{'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(crc.GetByteArrayCrc32(nine), crc_of_nine);
    EXPECT_EQ(crc.GetByteArrayCrc32(nine, -5), crc_of_nine);
    EXPECT_EQ(crc.GetByteArrayCrc32({}), 0);
    EXPECT_EQ(crc.GetByteArrayCrc32(std::vector<uint8_t>(32767, 0x5A)), zlib_crc(QByteArray(32767, 0x5A)));
    EXPECT_THROW(crc.GetByteArrayCrc32(std::vector<uint8_t>(32768, 0x5A)), ZelError);
}

TEST_F(CrcFiles, read_delivers_chunks_and_keeps_the_rest_of_the_buffer) {
    const std::pair<int, std::vector<int32_t>> cases[] = {
        {0, {0}}, {8191, {8191, 0}}, {8192, {8192, 0}}, {8193, {8192, 1, 0}}};
    for (const auto& [size, deliveries] : cases) {
        cBinaryFileStream stream;
        stream.file(write(QString::number(size), QByteArray(size, 'a')));
        EXPECT_EQ(stream.Length(), size);
        std::vector<uint8_t> buffer(8192, 0xEE);
        for (int32_t expected : deliveries) EXPECT_EQ(stream.Read(buffer, 8192), expected) << size;
        EXPECT_EQ(stream.file_number, 0) << "the read that finds nothing closes the file";
        EXPECT_EQ(buffer[1], size == 0 ? 0xEE : 'a') << "the old contents stay behind the last byte";
    }
}

TEST_F(CrcFiles, a_second_file_on_one_stream_reads_short) {
    QByteArray second_bytes(20000, 'y');
    second_bytes[7] = 'z';
    cBinaryFileStream stream;
    const cCRC32 crc;
    stream.file(write("first", QByteArray(10000, 'x')));
    crc.GetFileCrc32(stream);
    stream.file(write("second", second_bytes));
    EXPECT_EQ(crc.GetFileCrc32(stream), zlib_crc(second_bytes.left(10000)));
}

TEST_F(CrcFiles, missing_and_folder_paths_fail_as_file_not_found) {
    QDir(dir.path()).mkdir("folder");
    for (const char* name : {"absent", "folder", "nodir/absent"}) {
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
    EXPECT_EQ(CalculateCRC(path), crc_of_nine);
}

// ".Doe.zel" was once taken for a hidden file: its CRC failed and the patient could not load.
TEST_F(CrcFiles, read_only_and_dot_named_files_read_like_any_other) {
    for (const char* name : {"locked", ".Doe.zel"}) {
        const QString path = write(name, "123456789");
        QFile::setPermissions(path, QFileDevice::ReadOwner);
        EXPECT_EQ(CalculateCRC(path), crc_of_nine) << name;
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
