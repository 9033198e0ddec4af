#pragma once
// The checksum of a protected file (a patient file or a language file) and its companion
// ".sfv" file of one line, "CRC:" and the value in hexadecimal.
#include <QString>
#include <cstdint>

namespace zel {

// The CRC-32 of every byte of the file, read in one pass by a fresh stream. A missing or
// hidden file fails with number 53; the caller handles it.
int32_t CalculateCRC(const QString& path);

// The signed word in upper-case hexadecimal, no prefix, no leading zeros: 8 digits when
// bit 31 is set, "0" for 0.
QString crc_hex(int32_t crc);

// "CRC:", the hexadecimal and CR LF.
QByteArray crc_companion_line(int32_t crc);

// Replaces the companion at `companion_path` whole; false when it can't be written.
bool write_crc_companion(const QString& companion_path, int32_t crc);

}  // namespace zel
