// The simulated module's balloon states and breathing; its stream and line faults are seen
// over a live line (tests/sim/live_line_test.cpp).
#include "control_module.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "wire.h"

namespace zelsim::test {
namespace {

Step act(double time, std::function<void(ControlModule&)> f) {
    return {time, [f](ControlModule& m, double) { f(m); }};
}

TEST(SimulatedBalloon, follows_the_commands_and_the_patient_through_its_states) {
    struct Case { const char* name; std::vector<Step> steps; std::vector<int> states; int hold_frames; };
    const auto release = [](ControlModule& m) { m.set_switch(false); };
    const auto pneumatic_fault = [](ControlModule& m) { m.set_fault(Fault::pneumatic, true); };
    const Step stream = send(0, "E"), arm = send(0.1, "A");
    const Case cases[] = {
        {"armed on inhalation, held for the duration", {stream, arm}, {1, 2, 4, 1}, 100},
        {"armed on exhalation", {stream, send(0.1, "B")}, {1, 3, 4, 1}, 100},
        {"deactivated before the crossing", {stream, arm, send(0.3, "X")}, {1, 2, 1}, 0},
        {"ended by the patient's release", {stream, arm, act(1.4, release)}, {1, 2, 4, 1}, 26},
        {"ended by a fault", {stream, arm, act(1.4, pneumatic_fault)}, {1, 2, 4, 5, 1}, 26},
        {"no hold while the switch is open", {act(0, release), stream, arm}, {1, 2}, 0},
        {"no arming while a fault stands",
         {act(0, [](ControlModule& m) { m.set_fault(Fault::line, true); }), stream, arm}, {1}, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        // A quiet patient breathing from 1.0 L to 1.8 L every 4 s; the threshold is 1.5 L and the
        // hold 2 s (100 frames). The first inhalation crosses the threshold about 0.8 s in.
        ControlModule module(3);
        module.breathing().noise_litres = 0.0;
        module.receive({'L', 2, 'T', 0x01, 0x77}, 0.0);
        const auto frames = data_frames(run(module, c.steps, 9.9));
        std::vector<int> states;  // each run of equal states once
        for (const SeenFrame& f : frames)
            if (states.empty() || states.back() != f.balloon) states.push_back(f.balloon);
        EXPECT_EQ(states, c.states);
        int held = 0, deflated = 0, armed_as = 0;
        for (size_t k = 0; k < frames.size(); ++k) {
            const SeenFrame& f = frames[k];
            held += f.balloon == inflated;
            deflated += f.balloon == deflating;
            if (f.balloon != inflated) {
                if (f.balloon != 1 && f.balloon != deflating) armed_as = f.balloon;
                EXPECT_EQ(f.time_left, 0) << k;
                continue;
            }
            // A hold, however it ends, counts down from its duration with the airway closed
            // where the volume crossed the threshold the way it was armed for.
            const bool first = frames[k - 1].balloon != inflated;
            const int crossing = first ? f.volume_units : frames[k - 1].volume_units;
            const int into_hold = first ? 0 : 100 - frames[k - 1].time_left;
            EXPECT_EQ(f.time_left, 99 - into_hold) << k;
            EXPECT_EQ(f.volume_units, crossing) << k;
            EXPECT_TRUE(!first || armed_as != 2 || (crossing >= 375 && crossing < 385)) << crossing;
            EXPECT_TRUE(!first || armed_as != 3 || (crossing <= 375 && crossing > 365)) << crossing;
        }
        EXPECT_EQ(held, c.hold_frames);
        EXPECT_EQ(deflated, std::count(states.begin(), states.end(), deflating) * deflating_frames);
    }
}

TEST(SimulatedBreathing, breathes_around_the_resting_level) {
    ControlModule module(11);
    const auto frames = data_frames(run(module, {send(0, "E")}, 40.0));
    ASSERT_NEAR(static_cast<double>(frames.size()), 2000, 1);
    const auto [low, high] = std::ranges::minmax(frames, {}, &SeenFrame::volume_units);
    EXPECT_NEAR(low.volume_units * 0.004, 1.0, 0.1);
    EXPECT_NEAR(high.volume_units * 0.004, 1.8, 0.2);
    int rises = 0;  // upward crossings of the middle of the breath: one per breath
    for (size_t k = 1; k < frames.size(); ++k)
        rises += frames[k - 1].volume_units < 350 && frames[k].volume_units >= 350;
    EXPECT_TRUE(rises >= 8 && rises <= 14) << rises;  // about ten breaths in 40 s, noisy crossings
}

}  // namespace
}  // namespace zelsim::test
