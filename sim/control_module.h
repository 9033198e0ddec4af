#pragma once
// The control module as the console sees it on the serial line: fed with the console's bytes,
// run by time, and giving the bytes it sends. No device or clock of its own, so that tests
// drive it directly.
#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "balloon.h"
#include "breathing.h"
#include "command_reader.h"
#include "frame_encoding.h"

namespace zelsim {

constexpr double frame_period = 0.02;

enum class Fault { line, battery, transducer, pneumatic };

// The levels that the status frame reports, in the units a service engineer reads.
struct Supplies {
    double battery_volts = 5.4;
    double line_volts = 12.0;
    double pressure_psi = 8.0;
    double vacuum_psi = 6.0;
};

// The settings as last uploaded, in their wire units.
struct ModuleSettings {
    uint8_t duration_seconds = 20;
    int threshold_units = 375;
    uint16_t forward_calibration = 32768;
    uint16_t reverse_calibration = 32768;
};

// What went out on the wire, for logs and tests.
struct WireEvent {
    enum Kind { data, status, noise } kind;
    std::vector<uint8_t> bytes;
    bool corrupt = false;  // sent with a wrong checksum on purpose
    double time = 0.0;
};

// Raw counts of the status frame for the levels above.
uint8_t battery_raw(double volts);
uint8_t line_raw(double volts);
uint8_t reservoir_raw(double psi);

class ControlModule {
  public:
    explicit ControlModule(uint32_t seed = 1);

    // Bytes from the console at time now (seconds).
    void receive(const std::vector<uint8_t>& bytes, double now);
    // Runs the module's clock up to now; gives the bytes it sent meanwhile.
    std::vector<uint8_t> advance_to(double now);

    // Controls.
    void set_switch(bool closed);
    // Two closings of the switch within half a second: the patient's distress signal.
    void double_press(double now);
    void set_fault(Fault fault, bool on);
    Supplies supplies;
    BreathingPattern& breathing() { return patient.pattern; }
    const BreathingPattern& breathing() const { return patient.pattern; }
    Breathing& patient_breathing() { return patient; }
    const Breathing& patient_breathing() const { return patient; }
    double corrupt_rate = 0.0;  // fraction of frames sent with a wrong checksum
    double noise_rate = 0.0;    // fraction of gaps between frames that get noise bytes
    bool wrong_echo = false;    // the status frame echoes a threshold one unit off
    void cut_link(double now, double seconds);
    // The next data frame goes out with these bytes behind its start byte and a good
    // checksum, whatever the module's state: a service engineer's probe of the console.
    void send_chosen_frame(const std::array<uint8_t, 6>& bytes) { chosen_frames.push_back(bytes); }

    // State.
    bool streaming() const { return is_streaming; }
    bool link_cut(double now) const { return now < cut_until; }
    bool switch_closed() const { return switch_is_closed; }
    bool fault(Fault f) const { return faults[static_cast<int>(f)]; }
    const Balloon& balloon() const { return valve; }
    const ModuleSettings& settings() const { return held; }
    int volume_units() const { return integrator.volume_units(); }
    double lung_volume() const { return patient.lung_volume(); }
    std::string version = "ZEL-CM SIM 1.0";

    std::function<void(const Command&)> on_command;
    std::function<void(const WireEvent&)> on_wire;

  private:
    void execute(const Command& command, double now);
    void step_frame(double now, std::vector<uint8_t>& out);
    uint8_t flags() const;
    bool any_fault() const;
    void send(WireEvent::Kind kind, const uint8_t* bytes, int count, double now,
              std::vector<uint8_t>& out, bool may_corrupt = true);

    CommandReader reader;
    Breathing patient;
    VolumeIntegrator integrator;
    Balloon valve;
    ModuleSettings held;
    std::mt19937 random;
    std::deque<std::pair<double, bool>> switch_events;
    std::deque<std::array<uint8_t, 6>> chosen_frames;
    std::vector<uint8_t> pending;  // answers waiting for the next advance
    bool faults[4] = {false, false, false, false};
    bool switch_is_closed = true;
    bool is_streaming = false;
    double next_frame = -1.0;
    double cut_until = -1.0;
};

}  // namespace zelsim
