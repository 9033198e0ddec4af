#include "script.h"

#include <charconv>
#include <sstream>
#include <vector>

namespace zelsim {

namespace {

std::optional<double> number(const std::string& text) {
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

ParsedLine error(const std::string& text) { return {std::nullopt, text}; }

ParsedLine with_number(Instruction::Op op, const std::vector<std::string>& words, size_t at,
                       double low, double high) {
    if (words.size() != at + 1) return error("expected one number after \"" + words[0] + "\"");
    const auto value = number(words[at]);
    if (!value || *value < low || *value > high) {
        std::ostringstream out;
        out << "\"" << words[at] << "\" is not a number from " << low << " to " << high;
        return error(out.str());
    }
    Instruction i;
    i.op = op;
    i.number = *value;
    return {i, {}};
}

ParsedLine with_choice(Instruction::Op op, const std::vector<std::string>& words, size_t at,
                       const char* yes, const char* no) {
    if (words.size() != at + 1 || (words[at] != yes && words[at] != no))
        return error(std::string("expected \"") + yes + "\" or \"" + no + "\"");
    Instruction i;
    i.op = op;
    i.on = words[at] == yes;
    return {i, {}};
}

ParsedLine simple(Instruction::Op op, const std::vector<std::string>& words, size_t count) {
    if (words.size() != count) return error("unexpected words after \"" + words[0] + "\"");
    Instruction i;
    i.op = op;
    return {i, {}};
}

ParsedLine parse_gating(const std::vector<std::string>& w) {
    using I = Instruction;
    if (w.size() < 2) return error("\"gating\" needs a control");
    const std::string& what = w[1];
    if (what == "connected") return with_choice(I::gating_connected, w, 2, "yes", "no");
    if (what == "relay-link") return with_choice(I::gating_relay_link, w, 2, "up", "down");
    if (what == "timing-violation") return simple(I::gating_timing_violation, w, 2);
    if (what == "enable" && w.size() == 3) {
        const char letter = w[2] == "enabled"    ? 'E'
                            : w[2] == "disabled" ? 'D'
                            : w[2] == "fault"    ? 'F'
                                                 : 0;
        if (!letter) return error("expected \"enabled\", \"disabled\" or \"fault\"");
        I i;
        i.op = I::gating_enable;
        i.letter = letter;
        return {i, {}};
    }
    if (what == "relay-error" && w.size() == 3) {
        I i;
        i.op = I::gating_relay_error;
        if (w[2] == "none")
            i.error = RelayError::none;
        else if (w[2] == "opening")
            i.error = RelayError::opening;
        else if (w[2] == "closing")
            i.error = RelayError::closing;
        else if (w[2] == "unknown")
            i.error = RelayError::unknown;
        else
            return error("expected \"none\", \"opening\", \"closing\" or \"unknown\"");
        return {i, {}};
    }
    return error("unknown gating control \"" + what + "\"");
}

}  // namespace

ParsedLine parse_script_line(const std::string& raw) {
    using I = Instruction;
    std::string line = raw.substr(0, raw.find('#'));
    std::istringstream in(line);
    std::vector<std::string> w;
    for (std::string word; in >> word;) w.push_back(word);
    if (w.empty()) return {};
    const std::string& verb = w[0];

    if (verb == "wait") return with_number(I::wait, w, 1, 0, 86400);
    if (verb == "quit") return simple(I::quit, w, 1);
    if (verb == "await") {
        if (w.size() != 2 || w[1].size() != 1) return error("expected one command letter");
        I i;
        i.op = I::await_command;
        i.letter = w[1][0];
        return {i, {}};
    }
    if (verb == "switch" && w.size() == 2) {
        if (w[1] == "press") return simple(I::switch_press, w, 2);
        if (w[1] == "release") return simple(I::switch_release, w, 2);
        if (w[1] == "double") return simple(I::switch_double, w, 2);
        return error("expected \"press\", \"release\" or \"double\"");
    }
    if (verb == "fault" && w.size() == 3) {
        ParsedLine p = with_choice(I::fault, w, 2, "on", "off");
        if (!p.instruction) return p;
        if (w[1] == "line")
            p.instruction->which = Fault::line;
        else if (w[1] == "battery")
            p.instruction->which = Fault::battery;
        else if (w[1] == "transducer")
            p.instruction->which = Fault::transducer;
        else if (w[1] == "pneumatic")
            p.instruction->which = Fault::pneumatic;
        else
            return error("unknown fault \"" + w[1] + "\"");
        return p;
    }
    if (verb == "battery") return with_number(I::battery, w, 1, 0, 9.25);
    if (verb == "line") return with_number(I::line, w, 1, 0, 15.0);
    if (verb == "pressure") return with_number(I::pressure, w, 1, -1.875, 16.875);
    if (verb == "vacuum") return with_number(I::vacuum, w, 1, -1.875, 16.875);
    if (verb == "corrupt") return with_number(I::corrupt, w, 1, 0, 1);
    if (verb == "noise") return with_number(I::noise, w, 1, 0, 1);
    if (verb == "cut") return with_number(I::cut, w, 1, 0, 3600);
    if (verb == "echo") return with_choice(I::echo, w, 1, "right", "wrong");
    if (verb == "breathing" && w.size() >= 2) {
        if (w[1] == "rest") return with_number(I::breathing_rest, w, 2, -10, 10);
        if (w[1] == "amplitude") return with_number(I::breathing_amplitude, w, 2, 0, 6);
        if (w[1] == "period") return with_number(I::breathing_period, w, 2, 1, 30);
        if (w[1] == "noise") return with_number(I::breathing_noise, w, 2, 0, 0.5);
        return error("unknown breathing control \"" + w[1] + "\"");
    }
    if (verb == "gating") return parse_gating(w);
    if (verb == "replay") {
        // The rest of the line is the file's path, blanks and all.
        const auto start = line.find_first_not_of(" \t", line.find("replay") + 6);
        const auto end = line.find_last_not_of(" \t\r");
        if (start == std::string::npos) return error("expected a curve file or \"off\"");
        I i;
        i.op = I::replay;
        const std::string path = line.substr(start, end - start + 1);
        if (path != "off") i.path = path;
        return {i, {}};
    }
    if (verb == "frame") {
        if (w.size() != 7) return error("expected six bytes in hexadecimal after \"frame\"");
        I i;
        i.op = I::frame;
        for (size_t k = 0; k < 6; ++k) {
            unsigned value = 0;
            const std::string& t = w[k + 1];
            const auto [end, ec] = std::from_chars(t.data(), t.data() + t.size(), value, 16);
            if (ec != std::errc() || end != t.data() + t.size() || value > 0xFF)
                return error("\"" + t + "\" is not a byte in hexadecimal");
            i.bytes[k] = static_cast<uint8_t>(value);
        }
        return {i, {}};
    }
    return error("unknown instruction \"" + line.substr(line.find_first_not_of(" \t")) + "\"");
}

void Simulator::apply(const Instruction& i, double now) {
    using I = Instruction;
    switch (i.op) {
        case I::switch_press:
            module.set_switch(true);
            break;
        case I::switch_release:
            module.set_switch(false);
            break;
        case I::switch_double:
            module.double_press(now);
            break;
        case I::fault:
            module.set_fault(i.which, i.on);
            break;
        case I::battery:
            module.supplies.battery_volts = i.number;
            break;
        case I::line:
            module.supplies.line_volts = i.number;
            break;
        case I::pressure:
            module.supplies.pressure_psi = i.number;
            break;
        case I::vacuum:
            module.supplies.vacuum_psi = i.number;
            break;
        case I::corrupt:
            module.corrupt_rate = i.number;
            break;
        case I::noise:
            module.noise_rate = i.number;
            break;
        case I::cut:
            module.cut_link(now, i.number);
            break;
        case I::echo:
            module.wrong_echo = !i.on;
            break;
        case I::breathing_rest:
            module.breathing().rest_litres = i.number;
            break;
        case I::breathing_amplitude:
            module.breathing().amplitude_litres = i.number;
            break;
        case I::breathing_period:
            module.breathing().period_seconds = i.number;
            break;
        case I::breathing_noise:
            module.breathing().noise_litres = i.number;
            break;
        case I::gating_connected:
            gating.connected = i.on;
            break;
        case I::gating_relay_link:
            gating.relay_link_up = i.on;
            break;
        case I::gating_enable:
            gating.enable = i.letter;
            break;
        case I::gating_relay_error:
            gating.relay_error = i.error;
            break;
        case I::gating_timing_violation:
            ++gating.timing_violations;
            break;
        case I::frame:
            module.send_chosen_frame(i.bytes);
            break;
        case I::replay:
            if (i.path.empty())
                module.patient_breathing().replay(nullptr);
            else
                replay(i.path);
            break;
        case I::wait:
        case I::await_command:
        case I::quit:
            break;
    }
}

bool Simulator::replay(const std::string& path) {
    std::string error;
    auto curve = CurveReplay::load(path, error);
    if (!curve) {
        messages.push_back(error + "; the patient goes on breathing as before");
        return false;
    }
    module.patient_breathing().replay(std::move(curve));
    return true;
}

void ScriptRunner::run(double now, Simulator& simulator) {
    while (!queue.empty() && !quitting) {
        const Instruction& next = queue.front();
        if (next.op == Instruction::wait) {
            if (!wait_started) {
                wait_started = true;
                wait_until = now + next.number;
            }
            if (now < wait_until) return;
            wait_started = false;
        } else if (next.op == Instruction::await_command) {
            if (!wait_started) {
                wait_started = true;
                awaited_seen = false;
            }
            if (!awaited_seen) return;
            wait_started = false;
        } else if (next.op == Instruction::quit) {
            quitting = true;
        } else {
            simulator.apply(next, now);
        }
        queue.pop_front();
    }
}

void ScriptRunner::command_seen(char letter) {
    if (!queue.empty() && queue.front().op == Instruction::await_command && wait_started &&
        queue.front().letter == letter)
        awaited_seen = true;
}

}  // namespace zelsim
