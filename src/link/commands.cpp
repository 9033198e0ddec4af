// Commands to the control module: one ASCII letter each, parameters as raw bytes.
#include "link/commands.h"

#include <cmath>

#include "app/form1.h"
#include "app/helpers.h"

namespace zel {

namespace {
uint8_t to_byte(long long value, const char* source) {
    if (value < 0 || value > 255) raise_overflow(source);
    return static_cast<uint8_t>(value);
}
}  // namespace

uint8_t encode_duration(double duration) {
    return to_byte(round_to_integer(duration), "encode_duration");
}

std::array<uint8_t, 2> encode_threshold(float thresh) {
    const double a = std::fabs(static_cast<double>(thresh)) * 250.0;
    auto low = static_cast<uint8_t>(round_to_integer(a) % 256);
    auto high = to_byte(static_cast<long long>(round_to_places(a / 256.0, 2)), "encode_threshold");
    if (thresh < 0.0f) {
        high = static_cast<uint8_t>(~high);
        const int16_t negated = checked_i16(static_cast<uint8_t>(~low) + 1, "encode_threshold");
        low = to_byte(negated, "encode_threshold");
    }
    return {high, low};
}

std::array<uint8_t, 2> encode_calibration(float factor) {
    const double b = static_cast<double>(factor) * 8192000.0;
    const uint8_t high = to_byte(round_to_integer(b / 256.0), "encode_calibration");
    const uint8_t low = static_cast<uint8_t>(round_to_int32(b) % 256);
    return {high, low};
}

// Nothing reaches the module behind a failure report: a handler resumed after the report's
// box must not arm the balloon.
bool Form1::send_command(const char* letters) {
    if (stopped_by_failure) return false;
    return sent_to_module(platform.serial.Output(QByteArray(letters)));
}

bool Form1::send_byte(uint8_t byte) {
    if (stopped_by_failure) return false;
    return sent_to_module(platform.serial.Output(QByteArray(1, static_cast<char>(byte))));
}

bool Form1::sent_to_module(bool sent) {
    if (sent) return true;
    // A command the module may never have had ("X" ending a hold, an upload) is a line that
    // can't be counted on: a linked module is lost at once, so that the beam stops now rather
    // than at the heartbeat's next tick; a port being tried just gives no status frame.
    if (Timer_HeartBeat->Enabled())
        lose_module_link();
    else if (platform.serial.PortOpen())
        platform.serial.set_PortOpen(false);
    return false;
}

void Form1::upload_settings() {
    if (!platform.serial.PortOpen()) return;
    // The sequence ends at a command that did not leave: the rest would go to a closed port.
    if (!send_command("L") || !send_byte(encode_duration(duration))) return;
    const auto threshold = encode_threshold(thresh);
    if (!send_command("T") || !send_byte(threshold[0]) || !send_byte(threshold[1])) return;
    const auto forward = encode_calibration(forward_calibration_factor);
    if (!send_command("+") || !send_byte(forward[0]) || !send_byte(forward[1])) return;
    const auto reverse = encode_calibration(reverse_calibration_factor);
    if (!send_command("-") || !send_byte(reverse[0]) || !send_byte(reverse[1])) return;
    if (!send_command("1")) return;
    settings_confirm = true;
    settings_confirm_counter = 0;
    send_command("V");
}

void Form1::stop_module_link() {
    if (platform.serial.PortOpen()) send_command("D");
    Timer_HeartBeat->set_Enabled(false);
    Timer_module_connect->set_Enabled(false);
}

}  // namespace zel
