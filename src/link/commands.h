#pragma once
// Encodings of the settings sent to the module.
#include <array>
#include <cstdint>

namespace zel {

// Whole seconds, nearest with ties to even.
uint8_t encode_duration(double duration);
// High then low byte in units of 0.004 L. The high byte is rounded to two places before it
// is truncated and no carry passes from the low byte: a fraction of 0.995 or more sends the
// threshold 256 units high. A negative threshold with a low byte of 0 overflows.
std::array<uint8_t, 2> encode_threshold(float thresh);
// High then low byte in units of 1/8192000.
std::array<uint8_t, 2> encode_calibration(float factor);

}  // namespace zel
