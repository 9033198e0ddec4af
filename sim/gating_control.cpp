#include "gating_control.h"

#include <sstream>

namespace zelsim {

namespace {

const char* error_name(RelayError e) {
    switch (e) {
        case RelayError::opening:
            return "opening";
        case RelayError::closing:
            return "closing";
        case RelayError::unknown:
            return "unknown";
        case RelayError::none:
            break;
    }
    return "none";
}

bool parse_yes(const std::string& value, bool& out, const char* yes, const char* no) {
    if (value == yes) return out = true, true;
    if (value == no) return out = false, true;
    return false;
}

}  // namespace

std::string gating_control_text(const GatingControl& c) {
    std::ostringstream out;
    out << "connected=" << (c.connected ? "yes" : "no") << '\n'
        << "relay_link=" << (c.relay_link_up ? "up" : "down") << '\n'
        << "enable=" << c.enable << '\n'
        << "relay_error=" << error_name(c.relay_error) << '\n'
        << "timing_violations=" << c.timing_violations << '\n';
    return out.str();
}

GatingControl parse_gating_control(const std::string& text) {
    GatingControl c;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const auto eq = line.find('=');
        if (eq == std::string::npos) continue;
        const std::string name = line.substr(0, eq), value = line.substr(eq + 1);
        if (name == "connected") {
            parse_yes(value, c.connected, "yes", "no");
        } else if (name == "relay_link") {
            parse_yes(value, c.relay_link_up, "up", "down");
        } else if (name == "enable") {
            if (value == "E" || value == "D" || value == "F") c.enable = value[0];
        } else if (name == "relay_error") {
            for (RelayError e :
                 {RelayError::none, RelayError::opening, RelayError::closing, RelayError::unknown})
                if (value == error_name(e)) c.relay_error = e;
        } else if (name == "timing_violations") {
            try {
                c.timing_violations = std::stoi(value);
            } catch (const std::exception&) {
            }
        }
    }
    return c;
}

std::string gating_control_path(const std::string& app_data) {
    return app_data + "/sim/tarrow-control.txt";
}
std::string gating_state_path(const std::string& app_data) {
    return app_data + "/sim/tarrow-state.txt";
}
std::string gating_call_log_path(const std::string& app_data) {
    return app_data + "/sim/tarrow-calls.log";
}

}  // namespace zelsim
