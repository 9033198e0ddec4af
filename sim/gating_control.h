#pragma once
// What the trainer sets of the simulated gating system, kept as a small text file of
// "name=value" lines that the gating library reads at each call:
//   connected=yes|no        the library finds the gating system
//   relay_link=up|down      the relay box answers the control unit
//   enable=E|D|F            enabled, disabled, fault
//   relay_error=none|opening|closing|unknown
//   timing_violations=N     raised so far; each rise latches a violation until it is cleared
#include <string>

namespace zelsim {

enum class RelayError { none, opening, closing, unknown };

struct GatingControl {
    bool connected = true;
    bool relay_link_up = true;
    char enable = 'E';
    RelayError relay_error = RelayError::none;
    int timing_violations = 0;

    bool operator==(const GatingControl&) const = default;
};

std::string gating_control_text(const GatingControl& control);
// Unknown names and bad values leave the field as it was.
GatingControl parse_gating_control(const std::string& text);

// The files under the application data folder.
std::string gating_control_path(const std::string& app_data);
std::string gating_state_path(const std::string& app_data);
std::string gating_call_log_path(const std::string& app_data);

}  // namespace zelsim
