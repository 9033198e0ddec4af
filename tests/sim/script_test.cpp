// The script language of the simulator: what each line does, and how timing holds it.
#include "script.h"

#include <gtest/gtest.h>

#include "wire.h"

namespace zelsim::test {
namespace {

TEST(SimulatorScript, each_control_line_sets_its_control) {
    struct Case {
        const char* line;
        std::function<bool(const Simulator&)> holds;
    };
    const Case cases[] = {
        {"switch release", [](const Simulator& s) { return !s.module.switch_closed(); }},
        {"fault pneumatic on", [](const Simulator& s) { return s.module.fault(Fault::pneumatic); }},
        {"fault transducer on  # a comment",
         [](const Simulator& s) { return s.module.fault(Fault::transducer); }},
        {"battery 3.7", [](const Simulator& s) { return s.module.supplies.battery_volts == 3.7; }},
        {"line 9.5", [](const Simulator& s) { return s.module.supplies.line_volts == 9.5; }},
        {"pressure 4", [](const Simulator& s) { return s.module.supplies.pressure_psi == 4; }},
        {"vacuum 2.5", [](const Simulator& s) { return s.module.supplies.vacuum_psi == 2.5; }},
        {"corrupt 0.25", [](const Simulator& s) { return s.module.corrupt_rate == 0.25; }},
        {"noise 0.5", [](const Simulator& s) { return s.module.noise_rate == 0.5; }},
        {"cut 2",
         [](const Simulator& s) { return s.module.link_cut(11.9) && !s.module.link_cut(12.0); }},
        {"echo wrong", [](const Simulator& s) { return s.module.wrong_echo; }},
        {"  breathing period 6",
         [](const Simulator& s) { return s.module.breathing().period_seconds == 6; }},
        {"breathing amplitude 1.2",
         [](const Simulator& s) { return s.module.breathing().amplitude_litres == 1.2; }},
        {"breathing rest -0.5",
         [](const Simulator& s) { return s.module.breathing().rest_litres == -0.5; }},
        {"gating connected no", [](const Simulator& s) { return !s.gating.connected; }},
        {"gating relay-link down", [](const Simulator& s) { return !s.gating.relay_link_up; }},
        {"gating enable disabled", [](const Simulator& s) { return s.gating.enable == 'D'; }},
        {"gating enable fault", [](const Simulator& s) { return s.gating.enable == 'F'; }},
        {"gating relay-error closing",
         [](const Simulator& s) { return s.gating.relay_error == RelayError::closing; }},
        {"gating timing-violation",
         [](const Simulator& s) { return s.gating.timing_violations == 1; }},
    };
    for (const Case& c : cases) {
        const ParsedLine parsed = parse_script_line(c.line);
        ASSERT_TRUE(parsed.error.empty()) << c.line << ": " << parsed.error;
        ASSERT_TRUE(parsed.instruction) << c.line;
        Simulator simulator;
        simulator.apply(*parsed.instruction, 10.0);
        EXPECT_TRUE(c.holds(simulator)) << c.line;
    }
}

TEST(SimulatorScript, refuses_what_it_does_not_understand_and_says_why) {
    const char* const bad[] = {
        "swtich press",
        "switch",
        "switch hold",
        "fault line",
        "fault valve on",
        "battery",
        "battery high",
        "battery 12",
        "corrupt 1.5",
        "noise -0.1",
        "wait",
        "wait soon",
        "await",
        "await EV",
        "echo maybe",
        "breathing depth 2",
        "breathing period 0",
        "gating",
        "gating enable on",
        "gating relay-error big",
        "quit now",
        "cut 1 2",
        "frame 06 04 80 00 00",
        "frame 06 04 80 00 00 32 01",
        "frame 06 04 800 00 00 32",
        "frame 06 04 8g 00 00 32",
    };
    for (const char* line : bad) {
        const ParsedLine parsed = parse_script_line(line);
        EXPECT_FALSE(parsed.instruction) << line;
        EXPECT_FALSE(parsed.error.empty()) << line;
    }
    for (const char* line : {"", "   ", "# only a comment"}) {
        const ParsedLine parsed = parse_script_line(line);
        EXPECT_FALSE(parsed.instruction) << line;
        EXPECT_TRUE(parsed.error.empty()) << line;
    }
}

TEST(SimulatorScript, a_chosen_frame_goes_out_next_with_a_good_checksum_even_when_spoiling) {
    ControlModule module;
    module.corrupt_rate = 1.0;
    std::vector<uint8_t> out = run(module, {send(0.0, "E")}, 0.1);
    Simulator simulator;
    simulator.module = module;
    const ParsedLine parsed = parse_script_line("frame 06 04 80 00 00 32");
    ASSERT_TRUE(parsed.instruction);
    simulator.apply(*parsed.instruction, 0.1);
    out = simulator.module.advance_to(0.125);
    ASSERT_EQ(out.size(), 8u);
    EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + 7),
              (std::vector<uint8_t>{0x83, 0x06, 0x04, 0x80, 0x00, 0x00, 0x32}));
    unsigned sum = 0;
    for (uint8_t b : out) sum += b;
    EXPECT_EQ(sum % 256, 0u);
    out = simulator.module.advance_to(0.145);
    ASSERT_EQ(out.size(), 8u);
    EXPECT_NE(out[3], 0x80) << "the module's own frames follow";
}

std::vector<Instruction> instructions(std::initializer_list<const char*> lines) {
    std::vector<Instruction> out;
    for (const char* line : lines) out.push_back(*parse_script_line(line).instruction);
    return out;
}

TEST(SimulatorScript, wait_holds_the_next_line_for_its_time) {
    Simulator simulator;
    ScriptRunner runner;
    for (const auto& i : instructions({"wait 1.5", "fault line on", "wait 1", "fault line off"}))
        runner.add(i);
    const std::pair<double, bool> expected[] = {
        {0.0, false}, {1.4, false}, {1.5, true}, {2.4, true}, {2.5, false}};
    for (const auto& [time, fault] : expected) {
        runner.run(time, simulator);
        EXPECT_EQ(simulator.module.fault(Fault::line), fault) << time;
    }
    EXPECT_TRUE(runner.idle());
}

TEST(SimulatorScript, await_holds_until_the_console_sends_that_command) {
    Simulator simulator;
    ScriptRunner runner;
    for (const auto& i : instructions({"await A", "switch release", "quit"})) runner.add(i);
    runner.run(0.0, simulator);
    runner.command_seen('E');
    runner.run(1.0, simulator);
    EXPECT_TRUE(simulator.module.switch_closed());
    runner.command_seen('A');
    runner.run(1.1, simulator);
    EXPECT_FALSE(simulator.module.switch_closed());
    EXPECT_TRUE(runner.quit_requested());
}

}  // namespace
}  // namespace zelsim::test
