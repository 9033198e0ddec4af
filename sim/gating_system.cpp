#include "gating_system.h"

#include <algorithm>
#include <cstring>

namespace zelsim {

namespace {

// Fixed-length field: the text, then zeros.
template <size_t N>
void put_field(char (&field)[N], const char* text) {
    std::memset(field, 0, N);
    std::memcpy(field, text, std::min(N, std::strlen(text)));
}

}  // namespace

void GatingSystem::apply(const GatingControl& c) {
    if (applied && c.timing_violations > control.timing_violations) violation = true;
    control = c;
    applied = true;
}

int16_t GatingSystem::open() {
    is_open = control.connected;
    return is_open ? 0 : 1;
}

int16_t GatingSystem::set_relay(bool close_relay, double now) {
    if (connected() != 0 || !control.relay_link_up) return 1;
    if (close_relay != commanded_closed) transition_end = now + relay_transition_seconds;
    commanded_closed = close_relay;
    return 0;
}

TarrowStatus GatingSystem::status(double now) const {
    TarrowStatus s{};
    s.relay_link = control.relay_link_up ? '^' : '_';
    if (control.relay_error == RelayError::unknown) {
        s.relay_state = 'U';
    } else if (now < transition_end) {
        s.relay_state = commanded_closed ? 'c' : 'o';
    } else if (commanded_closed) {
        s.relay_state = control.relay_error == RelayError::closing ? 'Y' : 'C';
    } else {
        s.relay_state = control.relay_error == RelayError::opening ? 'X' : 'O';
    }
    s.fast_gating = violation ? '!' : ':';
    s.reserved = ' ';
    s.enable_state = control.enable;
    s.permission_to_disable = unlocked ? 'U' : 'L';
    return s;
}

void fill_firmware(TarrowFirmware& firmware) {
    put_field(firmware.relay_firmware, "RSIM 2.10");
    put_field(firmware.control_firmware, "CSIM 3.02");
}

void fill_dll_version(TarrowDllVersion& version) { put_field(version.dll_version, "SIM 1.0.0"); }

}  // namespace zelsim
