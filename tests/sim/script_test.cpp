// The script language of the simulator: what each control line does. Its timing ("wait",
// "await") and its chosen frames are what the live-line tests run on.
#include "script.h"

#include <gtest/gtest.h>

namespace zelsim::test {
namespace {

using S = const Simulator&;

TEST(SimulatorScript, each_control_line_sets_its_control_and_refuses_what_it_does_not_understand) {
    const std::pair<const char*, std::function<bool(S)>> cases[] = {
        {"switch release", [](S s) { return !s.module.switch_closed(); }},
        {"fault pneumatic on", [](S s) { return s.module.fault(Fault::pneumatic); }},
        {"fault transducer on  # a comment", [](S s) { return s.module.fault(Fault::transducer); }},
        {"battery 3.7", [](S s) { return s.module.supplies.battery_volts == 3.7; }},
        {"line 9.5", [](S s) { return s.module.supplies.line_volts == 9.5; }},
        {"pressure 4", [](S s) { return s.module.supplies.pressure_psi == 4; }},
        {"vacuum 2.5", [](S s) { return s.module.supplies.vacuum_psi == 2.5; }},
        {"corrupt 0.25", [](S s) { return s.module.corrupt_rate == 0.25; }},
        {"noise 0.5", [](S s) { return s.module.noise_rate == 0.5; }},
        {"cut 2", [](S s) { return s.module.link_cut(11.9) && !s.module.link_cut(12.0); }},
        {"echo wrong", [](S s) { return s.module.wrong_echo; }},
        {"  breathing period 6", [](S s) { return s.module.breathing().period_seconds == 6; }},
        {"breathing amplitude 1.2", [](S s) { return s.module.breathing().amplitude_litres == 1.2; }},
        {"breathing rest -0.5", [](S s) { return s.module.breathing().rest_litres == -0.5; }},
        {"gating connected no", [](S s) { return !s.gating.connected; }},
        {"gating relay-link down", [](S s) { return !s.gating.relay_link_up; }},
        {"gating enable disabled", [](S s) { return s.gating.enable == 'D'; }},
        {"gating enable fault", [](S s) { return s.gating.enable == 'F'; }},
        {"gating relay-error closing", [](S s) { return s.gating.relay_error == RelayError::closing; }},
        {"gating timing-violation", [](S s) { return s.gating.timing_violations == 1; }},
        // Refused, and says why.
        {"swtich press", nullptr}, {"switch", nullptr}, {"fault valve on", nullptr},
        {"battery high", nullptr}, {"battery 12", nullptr}, {"corrupt 1.5", nullptr},
        {"wait soon", nullptr}, {"await EV", nullptr}, {"echo maybe", nullptr},
        {"breathing period 0", nullptr}, {"gating enable on", nullptr}, {"cut 1 2", nullptr},
        {"frame 06 04 80 00 00", nullptr}, {"frame 06 04 8g 00 00 32", nullptr}, {"replay   ", nullptr},
    };
    for (const auto& [line, holds] : cases) {
        SCOPED_TRACE(line);
        const ParsedLine parsed = parse_script_line(line);
        EXPECT_EQ(parsed.error.empty(), holds != nullptr) << parsed.error;
        ASSERT_EQ(parsed.instruction.has_value(), holds != nullptr);
        if (!holds) continue;
        Simulator simulator;
        simulator.apply(*parsed.instruction, 10.0);
        EXPECT_TRUE(holds(simulator));
    }
    // Blank and comment lines are neither instructions nor errors.
    for (const char* line : {"", "   ", "# only a comment"})
        EXPECT_TRUE(!parse_script_line(line).instruction && parse_script_line(line).error.empty()) << line;
}

}  // namespace
}  // namespace zelsim::test
