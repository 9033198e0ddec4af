#pragma once
// The module's two frames as they go on the wire.
#include <array>
#include <cstdint>
#include <string>

namespace zelsim {

constexpr uint8_t data_frame_start = 0x83;
constexpr uint8_t status_frame_start = 0x27;
constexpr int data_frame_length = 8;
constexpr int status_frame_length = 31;

// Flags byte of a data frame.
namespace flag {
constexpr uint8_t patient_switch = 0x02;
constexpr uint8_t transducer_healthy = 0x04;  // within the two transducer bits 0x0C
constexpr uint8_t transducer_failed = 0x08;
constexpr uint8_t battery_fault = 0x10;
constexpr uint8_t line_fault = 0x20;
constexpr uint8_t pneumatic_fault = 0x40;
}  // namespace flag

struct DataFrame {
    uint8_t flags = flag::transducer_healthy;
    uint8_t balloon = 1;
    int volume_units = 0;      // 0.004 L; kept within +-32767
    int time_left_frames = 0;  // 0.02 s; 0 to 65535
};

struct StatusFrame {
    std::string version;  // at most 15 characters are sent
    uint8_t transducer = 1;
    uint8_t battery_raw = 0;
    uint8_t line_raw = 0;
    uint8_t pressure_raw = 0;
    uint8_t vacuum_raw = 0;
    uint8_t duration_seconds = 0;
    int threshold_units = 0;  // 0.004 L, signed 16-bit on the wire
    uint16_t forward_calibration = 0;
    uint16_t reverse_calibration = 0;
};

// The last byte that makes all bytes of a frame sum to 0 modulo 256.
uint8_t closing_byte(const uint8_t* bytes, int count);

std::array<uint8_t, data_frame_length> encode_data_frame(const DataFrame& frame);
std::array<uint8_t, status_frame_length> encode_status_frame(const StatusFrame& frame);

}  // namespace zelsim
