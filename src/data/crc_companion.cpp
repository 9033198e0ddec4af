#include "data/crc_companion.h"

#include "data/binary_file_stream.h"
#include "data/crc32.h"
#include "data/whole_file.h"

namespace zel {

int32_t CalculateCRC(const QString& path) {
    cBinaryFileStream stream;
    stream.file(path);
    const cCRC32 crc;
    return crc.GetFileCrc32(stream);
}

QString crc_hex(int32_t crc) { return QString::number(static_cast<uint32_t>(crc), 16).toUpper(); }

QByteArray crc_companion_line(int32_t crc) {
    return QByteArrayLiteral("CRC:") + crc_hex(crc).toLatin1() + QByteArrayLiteral("\r\n");
}

bool write_crc_companion(const QString& companion_path, int32_t crc) {
    return replace_whole_file(companion_path, crc_companion_line(crc));
}

}  // namespace zel
