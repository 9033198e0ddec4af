// The simulator's encoders against the console's own decoders: a mistake shared by both
// would hide in either one's own tests.
#include <gtest/gtest.h>

#include <array>

#include "control_module.h"
#include "fakes/rig.h"
#include "frame_encoding.h"
#include "wire.h"

namespace zelsim::test {
namespace {

using zel::test::Rig;

TEST(SimulatedFrames, data_frames_pass_the_console_checksum_and_decode_to_what_was_meant) {
    struct Case { int units, time_left; double litres; };
    const Case cases[] = {
        {0, 0, 0.0},      {1, 1, 0.004},    {-1, 50, -0.004},      {250, 1000, 1.0},
        {-375, 51, -1.5}, {-32767, 2, -131.068}, {32767, 65535, 131.068},
        // Beyond the range the module reports its limit, never the pattern 0x80 0x00.
        {-32768, 0, -131.068}, {40000, 0, 131.068},
    };
    for (const Case& c : cases) {
        Rig rig;
        const auto bytes = encode_data_frame({.volume_units = c.units, .time_left_frames = c.time_left});
        rig.fakes.serial.receive(to_bytes({bytes.begin(), bytes.end()}));
        EXPECT_EQ(rig.form.total_counts, 1) << c.units;
        EXPECT_NEAR(rig.form.volume, c.litres, 1e-9) << c.units;
        EXPECT_NEAR(rig.form.ZEL_CM_duration, c.time_left * 0.02, 1e-9) << c.time_left;
    }
}

// Each fault line of the data frames, and each level of the status frames, as the trainer set them.
TEST(SimulatedStatus, the_console_judges_the_faults_and_levels_as_the_trainer_set_them) {
    using Faults = std::array<bool, 4>;  // line, battery, transducer, pneumatic
    using Checks = std::array<bool, 4>;  // turbine, battery, line, pneumatics
    struct Case { const char* name; std::function<void(ControlModule&)> set; Faults faults; Checks checks; };
    const auto fault = [](Fault f) { return [f](ControlModule& m) { m.set_fault(f, true); }; };
    const Case cases[] = {
        {"healthy", [](ControlModule&) {}, {0, 0, 0, 0}, {1, 1, 1, 1}},
        {"battery low", [](ControlModule& m) { m.supplies.battery_volts = 3.7; }, {0, 0, 0, 0}, {1, 0, 1, 1}},
        {"battery just good", [](ControlModule& m) { m.supplies.battery_volts = 3.78; }, {0, 0, 0, 0},
         {1, 1, 1, 1}},
        {"line low", [](ControlModule& m) { m.supplies.line_volts = 9.9; }, {0, 0, 0, 0}, {1, 1, 0, 1}},
        {"pressure low", [](ControlModule& m) { m.supplies.pressure_psi = 4.8; }, {0, 0, 0, 0}, {1, 1, 1, 0}},
        {"vacuum low", [](ControlModule& m) { m.supplies.vacuum_psi = 2.8; }, {0, 0, 0, 0}, {1, 1, 1, 0}},
        {"line fault", fault(Fault::line), {1, 0, 0, 0}, {1, 1, 1, 1}},
        {"battery fault", fault(Fault::battery), {0, 1, 0, 0}, {1, 1, 1, 1}},
        {"transducer failed", fault(Fault::transducer), {0, 0, 1, 0}, {0, 1, 1, 1}},
        {"pneumatic fault", fault(Fault::pneumatic), {0, 0, 0, 1}, {1, 1, 1, 1}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Rig rig;
        ControlModule module;
        c.set(module);
        module.receive(letters("E"), 0.0);
        rig.fakes.serial.receive(to_bytes(module.advance_to(0.05)));
        module.receive(letters("V"), 0.05);
        rig.fakes.serial.receive(to_bytes(module.advance_to(0.05)));
        const zel::Form1& f = rig.form;
        EXPECT_TRUE(f.zel_detect && f.total_counts >= 1);
        EXPECT_EQ(f.zel_version_id, QStringLiteral("ZEL-CM SIM 1.0"));
        EXPECT_EQ((Faults{f.line_fault, f.battery_fault, f.transducer_fault, f.pneumatic_fault}), c.faults);
        EXPECT_EQ((Checks{f.turbine_check, f.battery_check, f.line_check, f.pneumatics_check}), c.checks);
    }
}

TEST(SimulatedStatus, echoes_what_the_console_uploaded_so_that_it_confirms) {
    struct Case { double duration; float thresh; bool wrong_echo; int held_threshold_units; bool confirmed; };
    const Case cases[] = {
        {15, 0.5f, false, 125, true}, {20, 1.0f, false, 250, true},  {1, 0.0f, false, 0, true},
        {99, -0.5f, false, -125, true}, {30, 3.0f, false, 750, true},
        // The console sends 1.02 L as 2.044 L; the module echoes what it got, which differs.
        {10, 1.02f, false, 511, false}, {15, 0.5f, true, 125, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.thresh << (c.wrong_echo ? " echoed wrong" : ""));
        Rig rig;
        rig.form.duration = c.duration;
        rig.form.thresh = c.thresh;
        rig.form.upload_settings();
        ControlModule module;
        module.wrong_echo = c.wrong_echo;
        module.receive(letters(rig.fakes.serial.sent().toStdString()), 0.0);
        EXPECT_EQ((std::pair<double, int>(module.settings().duration_seconds, module.settings().threshold_units)),
                  std::pair(c.duration, c.held_threshold_units));
        rig.fakes.serial.receive(to_bytes(module.advance_to(0.0)));
        EXPECT_EQ(rig.form.settings_confirm, !c.confirmed);
        // One wrong echo is retried, not yet a fault.
        EXPECT_EQ(rig.form.settings_confirm_counter, c.confirmed ? 0 : 1);
        EXPECT_EQ(rig.form.sw_state, 1);
    }
}

// Noise between frames costs the console no frame, and the patient's double press is a
// distress signal to it.
TEST(SimulatedLine, noise_costs_no_frame_and_a_double_press_signals_distress) {
    Rig rig;
    ControlModule module(7);
    module.noise_rate = 0.5;
    int noise_bursts = 0;
    module.on_wire = [&](const WireEvent& e) { noise_bursts += e.kind == WireEvent::noise; };
    const auto bytes = run(
        module, {send(0.0, "E"), {2.0, [](ControlModule& m, double now) { m.double_press(now); }}}, 4.0);
    rig.fakes.serial.arrive(to_bytes(bytes));
    rig.fakes.serial.drain();
    EXPECT_GT(noise_bursts, 50);
    EXPECT_EQ(rig.form.total_counts, static_cast<double>(data_frames(bytes).size()));
    EXPECT_TRUE(rig.form.distress_fault);
    EXPECT_TRUE(rig.fakes.serial.sent().contains('X'));
}

}  // namespace
}  // namespace zelsim::test
