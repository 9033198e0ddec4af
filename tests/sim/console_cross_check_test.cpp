// The simulator's encoders against the console's own decoders: a mistake shared by both
// would hide in either one's own tests.
#include <gtest/gtest.h>

#include "control_module.h"
#include "fakes/rig.h"
#include "frame_encoding.h"
#include "wire.h"

namespace zelsim::test {
namespace {

using zel::test::Rig;

TEST(SimulatedFrames, data_frames_pass_the_console_checksum_and_decode_to_what_was_meant) {
    struct Case {
        int units, time_left;
        double litres;
    };
    const Case cases[] = {
        {0, 0, 0.0},
        {1, 1, 0.004},
        {-1, 50, -0.004},
        {250, 1000, 1.0},
        {-375, 51, -1.5},
        {32767, 65535, 131.068},
        {-32767, 2, -131.068},
        // Beyond the range the module reports its limit, never the pattern 0x80 0x00.
        {-32768, 0, -131.068},
        {40000, 0, 131.068},
    };
    for (const Case& c : cases) {
        Rig rig;
        DataFrame frame;
        frame.volume_units = c.units;
        frame.time_left_frames = c.time_left;
        const auto bytes = encode_data_frame(frame);
        rig.fakes.serial.receive(to_bytes({bytes.begin(), bytes.end()}));
        EXPECT_EQ(rig.form.total_counts, 1) << c.units;
        EXPECT_NEAR(rig.form.volume, c.litres, 1e-9) << c.units;
        EXPECT_NEAR(rig.form.ZEL_CM_duration, c.time_left * 0.02, 1e-9) << c.time_left;
    }
}

TEST(SimulatedFrames, each_fault_line_reaches_the_console_as_that_fault) {
    struct Case {
        std::optional<Fault> fault;
        bool line, battery, transducer, pneumatic;
    };
    const Case cases[] = {
        {std::nullopt, false, false, false, false},
        {Fault::line, true, false, false, false},
        {Fault::battery, false, true, false, false},
        {Fault::transducer, false, false, true, false},
        {Fault::pneumatic, false, false, false, true},
    };
    for (const Case& c : cases) {
        Rig rig;
        ControlModule module;
        if (c.fault) module.set_fault(*c.fault, true);
        module.receive(letters("E"), 0.0);
        rig.fakes.serial.receive(to_bytes(module.advance_to(0.05)));
        EXPECT_GE(rig.form.total_counts, 1);
        EXPECT_EQ(rig.form.line_fault, c.line);
        EXPECT_EQ(rig.form.battery_fault, c.battery);
        EXPECT_EQ(rig.form.transducer_fault, c.transducer);
        EXPECT_EQ(rig.form.pneumatic_fault, c.pneumatic);
    }
}

TEST(SimulatedStatus, the_console_judges_the_levels_as_the_trainer_set_them) {
    struct Case {
        const char* name;
        std::function<void(ControlModule&)> set;
        bool turbine, battery, line, pneumatics;
    };
    const Case cases[] = {
        {"healthy", [](ControlModule&) {}, true, true, true, true},
        {"battery low", [](ControlModule& m) { m.supplies.battery_volts = 3.7; }, true, false, true,
         true},
        {"battery just good", [](ControlModule& m) { m.supplies.battery_volts = 3.78; }, true, true,
         true, true},
        {"line low", [](ControlModule& m) { m.supplies.line_volts = 9.9; }, true, true, false,
         true},
        {"pressure low", [](ControlModule& m) { m.supplies.pressure_psi = 4.8; }, true, true, true,
         false},
        {"vacuum low", [](ControlModule& m) { m.supplies.vacuum_psi = 2.8; }, true, true, true,
         false},
        {"transducer failed", [](ControlModule& m) { m.set_fault(Fault::transducer, true); }, false,
         true, true, true},
    };
    for (const Case& c : cases) {
        Rig rig;
        ControlModule module;
        c.set(module);
        module.receive(letters("V"), 0.0);
        rig.fakes.serial.receive(to_bytes(module.advance_to(0.0)));
        EXPECT_TRUE(rig.form.zel_detect) << c.name;
        EXPECT_EQ(rig.form.zel_version_id, QStringLiteral("ZEL-CM SIM 1.0")) << c.name;
        EXPECT_EQ(rig.form.turbine_check, c.turbine) << c.name;
        EXPECT_EQ(rig.form.battery_check, c.battery) << c.name;
        EXPECT_EQ(rig.form.line_check, c.line) << c.name;
        EXPECT_EQ(rig.form.pneumatics_check, c.pneumatics) << c.name;
    }
}

TEST(SimulatedStatus, echoes_what_the_console_uploaded_so_that_it_confirms) {
    struct Case {
        double duration;
        float thresh;
        int held_duration, held_threshold_units;
        bool confirmed;
    };
    const Case cases[] = {
        {15, 0.5f, 15, 125, true},
        {20, 1.0f, 20, 250, true},
        {1, 0.0f, 1, 0, true},
        {99, -0.5f, 99, -125, true},
        {30, 3.0f, 30, 750, true},
        // The console sends 1.02 L as 2.044 L; the module echoes what it got, which differs.
        {10, 1.02f, 10, 511, false},
    };
    for (const Case& c : cases) {
        Rig rig;
        rig.form.duration = c.duration;
        rig.form.thresh = c.thresh;
        rig.form.upload_settings();
        ControlModule module;
        module.receive(letters(rig.fakes.serial.sent().toStdString()), 0.0);
        EXPECT_EQ(module.settings().duration_seconds, c.held_duration) << c.thresh;
        EXPECT_EQ(module.settings().threshold_units, c.held_threshold_units) << c.thresh;
        rig.fakes.serial.receive(to_bytes(module.advance_to(0.0)));
        EXPECT_EQ(rig.form.settings_confirm, !c.confirmed) << c.thresh;
    }
}

TEST(SimulatedStatus, a_wrong_echo_fails_the_confirmation) {
    Rig rig;
    rig.form.duration = 15;
    rig.form.thresh = 0.5f;
    rig.form.upload_settings();
    ControlModule module;
    module.wrong_echo = true;
    module.receive(letters(rig.fakes.serial.sent().toStdString()), 0.0);
    rig.fakes.serial.receive(to_bytes(module.advance_to(0.0)));
    EXPECT_TRUE(rig.form.settings_confirm);
    EXPECT_EQ(rig.form.settings_confirm_counter, 1);
}

TEST(SimulatedLine, noise_between_frames_costs_the_console_no_frame) {
    Rig rig;
    ControlModule module(7);
    module.noise_rate = 0.5;
    int noise_bursts = 0;
    module.on_wire = [&](const WireEvent& e) { noise_bursts += e.kind == WireEvent::noise; };
    const auto bytes = run(module, {send(0.0, "E")}, 4.0);
    rig.fakes.serial.arrive(to_bytes(bytes));
    rig.fakes.serial.drain();
    EXPECT_GT(noise_bursts, 50);
    EXPECT_EQ(rig.form.total_counts, static_cast<double>(data_frames(bytes).size()));
}

TEST(SimulatedPatient, a_double_press_is_a_distress_signal_to_the_console) {
    Rig rig;
    ControlModule module;
    const auto bytes = run(
        module, {send(0.0, "E"), {2.0, [](ControlModule& m, double now) { m.double_press(now); }}},
        4.0);
    rig.fakes.serial.arrive(to_bytes(bytes));
    rig.fakes.serial.drain();
    EXPECT_TRUE(rig.form.distress_fault);
    EXPECT_TRUE(rig.fakes.serial.sent().contains('X'));
}

}  // namespace
}  // namespace zelsim::test
