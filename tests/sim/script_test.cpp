// The script language of the simulator: what each line does, and how timing holds it.
#include "script.h"

#include <gtest/gtest.h>

#include <numeric>

#include "wire.h"

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
        {"swtich press", nullptr}, {"switch", nullptr}, {"switch hold", nullptr}, {"fault line", nullptr},
        {"fault valve on", nullptr}, {"battery", nullptr}, {"battery high", nullptr},
        {"battery 12", nullptr}, {"corrupt 1.5", nullptr}, {"noise -0.1", nullptr}, {"wait", nullptr},
        {"wait soon", nullptr}, {"await", nullptr}, {"await EV", nullptr}, {"echo maybe", nullptr},
        {"breathing depth 2", nullptr}, {"breathing period 0", nullptr}, {"gating", nullptr},
        {"gating enable on", nullptr}, {"gating relay-error big", nullptr}, {"quit now", nullptr},
        {"cut 1 2", nullptr}, {"frame 06 04 80 00 00", nullptr}, {"frame 06 04 80 00 00 32 01", nullptr},
        {"frame 06 04 800 00 00 32", nullptr}, {"frame 06 04 8g 00 00 32", nullptr}, {"replay", nullptr},
        {"replay   ", nullptr},
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

TEST(SimulatorScript, a_chosen_frame_goes_out_next_with_a_good_checksum_even_when_spoiling) {
    Simulator simulator;
    simulator.module.corrupt_rate = 1.0;
    run(simulator.module, {send(0.0, "E")}, 0.1);
    simulator.apply(parse_script_line("frame 06 04 80 00 00 32").instruction.value(), 0.1);
    std::vector<uint8_t> out = simulator.module.advance_to(0.125);
    ASSERT_EQ(out.size(), 8u);
    EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + 7),
              (std::vector<uint8_t>{0x83, 0x06, 0x04, 0x80, 0x00, 0x00, 0x32}));
    EXPECT_EQ(std::accumulate(out.begin(), out.end(), 0u) % 256, 0u);
    out = simulator.module.advance_to(0.145);
    ASSERT_EQ(out.size(), 8u);
    EXPECT_NE(out[3], 0x80) << "the module's own frames follow";
}

TEST(SimulatorScript, wait_holds_the_next_line_for_its_time_and_await_until_that_command_comes) {
    Simulator simulator;
    ScriptRunner runner;
    for (const char* line :
         {"wait 1.5", "fault line on", "wait 1", "fault line off", "await A", "switch release", "quit"})
        runner.add(parse_script_line(line).instruction.value());
    // At a moment of the module's time, after the console's command (0: none): the line
    // fault and the switch.
    struct Moment { double time; char command; bool fault, switch_closed; };
    const Moment moments[] = {
        {0.0, 0, false, true}, {1.4, 0, false, true}, {1.5, 0, true, true},
        {2.4, 'A', true, true},  // before the await is reached: not its command
        {2.5, 0, false, true},   {3.0, 'E', false, true}, {3.1, 'A', false, false},
    };
    for (const Moment& m : moments) {
        if (m.command) runner.command_seen(m.command);
        runner.run(m.time, simulator);
        EXPECT_EQ(simulator.module.fault(Fault::line), m.fault) << m.time;
        EXPECT_EQ(simulator.module.switch_closed(), m.switch_closed) << m.time;
    }
    EXPECT_TRUE(runner.quit_requested());
}

}  // namespace
}  // namespace zelsim::test
