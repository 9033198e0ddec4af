#pragma once
// Table-driven CRC-32 of IEEE 802.3 (reflected polynomial 0xEDB88320, initial value all ones,
// final value inverted), held as a signed 32-bit word as the companion files print it.
#include <array>
#include <cstdint>
#include <span>

namespace zel {

class cBinaryFileStream;

class cCRC32 {
  public:
    cCRC32();

    // CRC of the bytes from `lower_bound` to the array's upper bound. The index runs in a
    // signed 16-bit counter, so an array reaching index 32767 fails with an overflow.
    int32_t GetByteArrayCrc32(std::span<const uint8_t> bytes, int lower_bound = 0) const;

    // CRC of everything the stream still delivers, read in chunks of 8192 bytes.
    int32_t GetFileCrc32(cBinaryFileStream& stream) const;

    std::array<int32_t, 256> crc_table{};

  private:
    int32_t step(int32_t c, uint8_t byte) const;
};

}  // namespace zel
