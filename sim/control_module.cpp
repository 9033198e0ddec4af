#include "control_module.h"

#include <algorithm>
#include <cmath>

namespace zelsim {

namespace {

uint8_t to_byte(double counts) {
    return static_cast<uint8_t>(std::clamp(std::lround(counts), 0L, 255L));
}

}  // namespace

// The module's dividers: what one count of each converter stands for.
uint8_t battery_raw(double volts) { return to_byte(volts / 0.0363); }
uint8_t line_raw(double volts) { return to_byte(volts / 0.0588); }
// The reservoir sensors give 0.5 V at 0 psi and 4.5 V at 15 psi on a 0-5 V converter.
uint8_t reservoir_raw(double psi) { return to_byte((0.5 + psi * 4.0 / 15.0) * 255.0 / 5.0); }

ControlModule::ControlModule(uint32_t seed)
    : patient(seed), integrator(patient.lung_volume()), random(seed + 1) {}

void ControlModule::receive(const std::vector<uint8_t>& bytes, double now) {
    if (link_cut(now)) return;
    for (uint8_t byte : bytes) {
        if (auto command = reader.feed(byte, now)) {
            execute(*command, now);
            if (on_command) on_command(*command);
        }
    }
}

void ControlModule::execute(const Command& c, double now) {
    const auto word = [&c] {
        return static_cast<uint16_t>(c.parameters[0] << 8 | c.parameters[1]);
    };
    switch (c.letter) {
        case 'V': {
            StatusFrame s;
            s.version = version;
            s.transducer = fault(Fault::transducer) ? 0 : 1;
            s.battery_raw = battery_raw(supplies.battery_volts);
            s.line_raw = line_raw(supplies.line_volts);
            s.pressure_raw = reservoir_raw(supplies.pressure_psi);
            s.vacuum_raw = reservoir_raw(supplies.vacuum_psi);
            s.duration_seconds = held.duration_seconds;
            s.threshold_units = held.threshold_units + (wrong_echo ? 1 : 0);
            s.forward_calibration = held.forward_calibration;
            s.reverse_calibration = held.reverse_calibration;
            const auto frame = encode_status_frame(s);
            send(WireEvent::status, frame.data(), status_frame_length, now, pending);
            break;
        }
        case 'L':
            held.duration_seconds = c.parameters[0];
            break;
        case 'T':
            held.threshold_units = static_cast<int16_t>(word());
            break;
        case '+':
            held.forward_calibration = word();
            integrator.forward_factor = held.forward_calibration / 8192000.0;
            break;
        case '-':
            held.reverse_calibration = word();
            integrator.reverse_factor = held.reverse_calibration / 8192000.0;
            break;
        case 'E':
            is_streaming = true;
            break;
        case 'D':
        case 'd':
            is_streaming = false;
            break;
        case 'A':
            valve.arm(true, any_fault());
            break;
        case 'B':
            valve.arm(false, any_fault());
            break;
        case 'X':
            valve.let_go();
            break;
        default:
            break;  // "1" closes an upload; the settings already hold
    }
}

std::vector<uint8_t> ControlModule::advance_to(double now) {
    std::vector<uint8_t> out;
    out.swap(pending);
    if (next_frame < 0) next_frame = now;
    // After a long stall the module does not make up for lost time in one burst.
    if (now - next_frame > 1.0) next_frame = now;
    while (next_frame <= now) {
        step_frame(next_frame, out);
        next_frame += frame_period;
    }
    return out;
}

void ControlModule::step_frame(double now, std::vector<uint8_t>& out) {
    while (!switch_events.empty() && switch_events.front().first <= now) {
        switch_is_closed = switch_events.front().second;
        switch_events.pop_front();
    }
    integrator.add(patient.step(frame_period, valve.state() == inflated));
    BalloonInputs in;
    in.volume_units = integrator.volume_units();
    in.switch_closed = switch_is_closed;
    in.fault = any_fault();
    in.threshold_units = held.threshold_units;
    in.duration_frames = held.duration_seconds * 50;
    valve.step(in);

    if (!is_streaming || link_cut(now)) return;
    std::uniform_real_distribution<double> chance(0.0, 1.0);
    if (noise_rate > 0 && chance(random) < noise_rate) {
        // Noise that looked like a start byte would swallow the next good frame; line noise
        // of that kind is left out so that a lost frame always means a fault.
        std::uniform_int_distribution<int> count(1, 3), value(0, 255);
        std::vector<uint8_t> noise;
        for (int k = count(random); k > 0; --k) {
            uint8_t b;
            do b = static_cast<uint8_t>(value(random));
            while (b == data_frame_start || b == status_frame_start);
            noise.push_back(b);
        }
        send(WireEvent::noise, noise.data(), static_cast<int>(noise.size()), now, out);
    }
    if (!chosen_frames.empty()) {
        uint8_t frame[data_frame_length] = {data_frame_start};
        std::copy(chosen_frames.front().begin(), chosen_frames.front().end(), frame + 1);
        chosen_frames.pop_front();
        frame[data_frame_length - 1] = closing_byte(frame, data_frame_length - 1);
        send(WireEvent::data, frame, data_frame_length, now, out, false);
        return;
    }
    DataFrame d;
    d.flags = flags();
    d.balloon = valve.state();
    d.volume_units = in.volume_units;
    d.time_left_frames = valve.time_left_frames();
    const auto frame = encode_data_frame(d);
    send(WireEvent::data, frame.data(), data_frame_length, now, out);
}

void ControlModule::send(WireEvent::Kind kind, const uint8_t* bytes, int count, double now,
                         std::vector<uint8_t>& out, bool may_corrupt) {
    WireEvent event{kind, std::vector<uint8_t>(bytes, bytes + count), false, now};
    std::uniform_real_distribution<double> chance(0.0, 1.0);
    if (may_corrupt && kind != WireEvent::noise && corrupt_rate > 0 &&
        chance(random) < corrupt_rate) {
        std::uniform_int_distribution<int> offset(1, 255);
        event.bytes.back() = static_cast<uint8_t>(event.bytes.back() + offset(random));
        event.corrupt = true;
    }
    out.insert(out.end(), event.bytes.begin(), event.bytes.end());
    if (on_wire) on_wire(event);
}

uint8_t ControlModule::flags() const {
    uint8_t f = fault(Fault::transducer) ? flag::transducer_failed : flag::transducer_healthy;
    if (switch_is_closed) f |= flag::patient_switch;
    if (fault(Fault::battery)) f |= flag::battery_fault;
    if (fault(Fault::line)) f |= flag::line_fault;
    if (fault(Fault::pneumatic)) f |= flag::pneumatic_fault;
    return f;
}

bool ControlModule::any_fault() const {
    return std::any_of(std::begin(faults), std::end(faults), [](bool f) { return f; });
}

void ControlModule::set_switch(bool closed) {
    switch_events.clear();
    switch_is_closed = closed;
}

void ControlModule::double_press(double now) {
    switch_events.clear();
    double t = now;
    if (switch_is_closed) switch_events.emplace_back(t, false), t += 0.15;
    switch_events.emplace_back(t, true);
    switch_events.emplace_back(t + 0.15, false);
    switch_events.emplace_back(t + 0.3, true);
}

void ControlModule::set_fault(Fault f, bool on) { faults[static_cast<int>(f)] = on; }

void ControlModule::cut_link(double now, double seconds) { cut_until = now + seconds; }

}  // namespace zelsim
