#include "data/crc32.h"

#include <vector>

#include "app/zel_error.h"
#include "data/binary_file_stream.h"

namespace zel {

namespace {

constexpr int32_t polynomial = static_cast<int32_t>(0xEDB88320u);
constexpr int32_t all_ones = -1;
constexpr int32_t upper_three_bytes = static_cast<int32_t>(0xFFFFFF00u);
constexpr int32_t chunk_size = 8192;

// A logical right shift by one of a signed word: clear bit 0, halve, clear the sign.
int32_t shift_right_one(int32_t w) { return ((w & ~1) / 2) & 0x7FFFFFFF; }

}  // namespace

cCRC32::cCRC32() {
    for (int32_t i = 0; i < 256; ++i) {
        int32_t w = i;
        for (int bit = 0; bit < 8; ++bit)
            w = (w & 1) ? (shift_right_one(w) ^ polynomial) : shift_right_one(w);
        crc_table[static_cast<size_t>(i)] = w;
    }
}

int32_t cCRC32::step(int32_t c, uint8_t byte) const {
    const int32_t index = (c & 0xFF) ^ byte;
    return (((c & upper_three_bytes) / 256) & 0x00FFFFFF) ^ crc_table[static_cast<size_t>(index)];
}

int32_t cCRC32::GetByteArrayCrc32(std::span<const uint8_t> bytes, int lower_bound) const {
    const long long upper_bound = lower_bound + static_cast<long long>(bytes.size()) - 1;
    int16_t i = checked_i16(lower_bound, "cCRC32.GetByteArrayCrc32");
    const int16_t last = checked_i16(upper_bound, "cCRC32.GetByteArrayCrc32");
    int32_t c = all_ones;
    // The counter steps once past the last index, as a counted loop does, so index 32767
    // cannot be reached without an overflow.
    for (; i <= last; i = add_i16(i, 1, "cCRC32.GetByteArrayCrc32"))
        c = step(c, bytes[static_cast<size_t>(i - lower_bound)]);
    return ~c;
}

int32_t cCRC32::GetFileCrc32(cBinaryFileStream& stream) const {
    std::vector<uint8_t> buffer(chunk_size);
    int32_t c = all_ones;
    int32_t delivered = stream.Read(buffer, chunk_size);
    while (delivered > 0) {
        for (int32_t k = 0; k < delivered; ++k) c = step(c, buffer[static_cast<size_t>(k)]);
        delivered = stream.Read(buffer, chunk_size);
    }
    return ~c;
}

}  // namespace zel
