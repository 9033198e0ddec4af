#include "frame_encoding.h"

#include <algorithm>

namespace zelsim {

namespace {

// Two's complement, high byte first.
void put_signed16(uint8_t* at, int value) {
    const auto word = static_cast<uint16_t>(static_cast<int16_t>(value));
    at[0] = static_cast<uint8_t>(word >> 8);
    at[1] = static_cast<uint8_t>(word);
}

void put_unsigned16(uint8_t* at, unsigned value) {
    at[0] = static_cast<uint8_t>((value >> 8) & 0xFF);
    at[1] = static_cast<uint8_t>(value & 0xFF);
}

}  // namespace

uint8_t closing_byte(const uint8_t* bytes, int count) {
    unsigned sum = 0;
    for (int k = 0; k < count; ++k) sum += bytes[k];
    return static_cast<uint8_t>((256 - sum % 256) % 256);
}

std::array<uint8_t, data_frame_length> encode_data_frame(const DataFrame& frame) {
    std::array<uint8_t, data_frame_length> out{};
    out[0] = data_frame_start;
    out[1] = frame.flags;
    out[2] = frame.balloon;
    // -32768 would be 0x80 0x00, which has no magnitude in the console's 16-bit decoding.
    put_signed16(&out[3], std::clamp(frame.volume_units, -32767, 32767));
    put_unsigned16(&out[5], static_cast<unsigned>(std::clamp(frame.time_left_frames, 0, 65535)));
    out[7] = closing_byte(out.data(), data_frame_length - 1);
    return out;
}

std::array<uint8_t, status_frame_length> encode_status_frame(const StatusFrame& frame) {
    std::array<uint8_t, status_frame_length> out{};
    out[0] = status_frame_start;
    const size_t text_length = std::min<size_t>(frame.version.size(), 15);
    std::copy_n(frame.version.begin(), text_length, out.begin() + 1);
    out[18] = frame.transducer;
    out[19] = frame.battery_raw;
    out[20] = frame.line_raw;
    out[21] = frame.pressure_raw;
    out[22] = frame.vacuum_raw;
    out[23] = frame.duration_seconds;
    put_signed16(&out[24], frame.threshold_units);
    put_unsigned16(&out[26], frame.forward_calibration);
    put_unsigned16(&out[28], frame.reverse_calibration);
    out[30] = closing_byte(out.data(), status_frame_length - 1);
    return out;
}

}  // namespace zelsim
