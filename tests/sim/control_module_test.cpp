// The simulated module's behaviour on the line: the stream, the balloon's states and the
// line faults it is told to make.
#include "control_module.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

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
        {"aborted by the operator", {stream, arm, send(1.4, "X")}, {1, 2, 4, 1}, 26},
        {"ended by the patient's release", {stream, arm, act(1.4, release)}, {1, 2, 4, 1}, 26},
        {"ended by a fault", {stream, arm, act(1.4, pneumatic_fault)}, {1, 2, 4, 5, 1}, 26},
        {"no hold while the switch is open", {act(0, release), stream, arm}, {1, 2}, 0},
        {"no arming while a fault stands",
         {act(0, [](ControlModule& m) { m.set_fault(Fault::line, true); }), stream, arm}, {1}, 0},
        {"a second hold after the first", {stream, arm, send(4.1, "A")}, {1, 2, 4, 1, 2, 4, 1}, 200},
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

TEST(SimulatedBreathing, breathes_around_the_resting_level_scaled_by_the_calibration) {
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

    // The uploaded calibration scales the volume.
    const auto rise = [](ControlModule&& m) {  // over the first second, from no resting volume
        m.breathing().rest_litres = 0.0;
        const auto f = data_frames(run(m, {send(0, "E")}, 1.0));
        return f.back().volume_units - f.front().volume_units;
    };
    ControlModule doubled(5);
    doubled.receive({'+', 0xFF, 0xFF, '-', 0xFF, 0xFF}, 0.0);  // 0.008 L a pulse
    const int plain_rise = rise(ControlModule(5));
    EXPECT_GT(plain_rise, 50);
    EXPECT_NEAR(rise(std::move(doubled)), 2 * plain_rise, 4);
}

TEST(SimulatedStream, sends_only_what_is_asked_for) {
    struct Case { const char* name; std::vector<Step> steps; size_t data_frames, status_frames; };
    const Step stream = send(0, "E");
    const Case cases[] = {
        {"nothing unasked", {}, 0, 0}, {"one status frame for each V", {send(0.1, "V"), send(0.5, "VV")}, 0, 3},
        {"50 data frames a second after E", {stream}, 100, 0},
        {"D stops streaming", {stream, send(0.5, "D")}, 25, 0}, {"so does d", {stream, send(0.5, "d")}, 25, 0},
        {"a status frame in the stream", {stream, send(0.5, "V")}, 100, 1},
        {"a cut line is dead both ways for its time",
         {stream, act(1.0, [](ControlModule& m) { m.cut_link(1.0, 0.5); }), send(1.2, "D"), send(1.6, "V")},
         75, 1},
    };
    for (const Case& c : cases) {
        ControlModule module;
        size_t status = 0;
        module.on_wire = [&](const WireEvent& e) { status += e.kind == WireEvent::status; };
        const size_t data = data_frames(run(module, c.steps, 2.0 - 0.001)).size();
        EXPECT_NEAR(static_cast<double>(data), static_cast<double>(c.data_frames), 1) << c.name;
        EXPECT_EQ(status, c.status_frames) << c.name;
    }
}

TEST(SimulatedLine, corrupts_the_fraction_of_frames_it_is_told_to_and_no_other) {
    struct Case { double rate, low, high; };
    const Case cases[] = {{0.0, 0.0, 0.0}, {0.1, 0.06, 0.14}, {1.0, 1.0, 1.0}};
    for (const Case& c : cases) {
        ControlModule module(9);
        module.corrupt_rate = c.rate;
        int sent = 0, marked = 0, failing = 0;
        module.on_wire = [&](const WireEvent& e) {
            ++sent;
            marked += e.corrupt;
            failing += std::accumulate(e.bytes.begin(), e.bytes.end(), 0u) % 256 != 0;
        };
        run(module, {send(0, "E")}, 20.0);
        EXPECT_EQ(marked, failing) << c.rate;
        EXPECT_TRUE(failing >= c.low * sent && failing <= c.high * sent) << c.rate << ": " << failing;
    }
}

}  // namespace
}  // namespace zelsim::test
