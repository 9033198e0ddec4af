#pragma once
// The simulator's controls as lines of text, for the headless mode, the window's command field
// and demonstrations. One instruction a line; "#" begins a comment:
//
//   wait SECONDS                      the next line runs that much later
//   await LETTER                      the next line runs once the console has sent LETTER
//   quit                              the simulator ends
//   switch press|release|double       the patient's switch; double: the distress signal
//   fault line|battery|transducer|pneumatic on|off
//   battery VOLTS | line VOLTS        supply levels of the status frame
//   pressure PSI | vacuum PSI         reservoir levels of the status frame
//   corrupt FRACTION                  frames sent with a wrong checksum, 0 to 1
//   noise FRACTION                    gaps between frames that get noise bytes, 0 to 1
//   cut SECONDS                       the line is dead both ways for that long
//   echo right|wrong                  the status frame echoes the threshold one unit off
//   breathing rest|amplitude LITRES | period SECONDS | noise LITRES
//   gating connected yes|no | relay-link up|down | enable enabled|disabled|fault
//   gating relay-error none|opening|closing|unknown | timing-violation
//   frame B1 B2 B3 B4 B5 B6           the next data frame carries these bytes (hexadecimal,
//                                     behind the start byte; the checksum is added)
//   replay FILE | replay off          the patient breathes a curve file the console recorded,
//                                     looping; off: the model's own breathing again
#include <array>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "control_module.h"
#include "gating_control.h"

namespace zelsim {

struct Instruction {
    enum Op {
        wait,
        await_command,
        quit,
        switch_press,
        switch_release,
        switch_double,
        fault,
        battery,
        line,
        pressure,
        vacuum,
        corrupt,
        noise,
        cut,
        echo,
        breathing_rest,
        breathing_amplitude,
        breathing_period,
        breathing_noise,
        gating_connected,
        gating_relay_link,
        gating_enable,
        gating_relay_error,
        gating_timing_violation,
        frame,
        replay,
    } op = quit;
    double number = 0.0;
    bool on = false;
    char letter = 0;  // awaited command, or enable state E, D, F
    Fault which = Fault::line;
    RelayError error = RelayError::none;
    std::array<uint8_t, 6> bytes{};  // a chosen data frame's bytes behind its start byte
    std::string path;                // a curve file to replay; empty: the own breathing
};

struct ParsedLine {
    std::optional<Instruction> instruction;  // none for a blank or comment line
    std::string error;                       // set when the line is not understood
};

ParsedLine parse_script_line(const std::string& line);

// The simulated module and gating system, and the controls applied to them.
struct Simulator {
    explicit Simulator(uint32_t seed = 1) : module(seed) {}
    ControlModule module;
    GatingControl gating;

    // Applies one control instruction at time now; flow instructions do nothing here.
    void apply(const Instruction& instruction, double now);
    // Plays a recorded curve as the breathing; false, with the reason in `messages`, when the
    // file can't be played, and the breathing goes on as it was.
    bool replay(const std::string& path);

    // What the operator should read (a file that can't be replayed), oldest first; the host
    // takes them.
    std::vector<std::string> messages;
};

// Runs instructions in order, holding at "wait" and "await".
class ScriptRunner {
  public:
    void add(const Instruction& instruction) { queue.push_back(instruction); }
    void run(double now, Simulator& simulator);
    // Tells the runner of a command the module received.
    void command_seen(char letter);

    bool idle() const { return queue.empty(); }
    bool quit_requested() const { return quitting; }

  private:
    std::deque<Instruction> queue;
    double wait_until = -1.0;
    bool wait_started = false;
    bool awaited_seen = false;
    bool quitting = false;
};

}  // namespace zelsim
