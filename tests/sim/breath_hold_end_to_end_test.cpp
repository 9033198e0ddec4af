// The console's link and cycle against the simulated module on a real pseudo-terminal, with
// the real serial adapter and the real timers: search, upload, stream, holds, distress and
// a cut line.
#include <gtest/gtest.h>

#include "sim/live_console.h"

namespace zel::test {
namespace {

TEST(BreathHoldEndToEnd, finds_the_module_holds_aborts_signals_distress_and_survives_a_cut) {
    LiveConsole c(false);
    c.form.duration = 2;
    std::vector<int16_t> states;  // the balloon states as the console took them, without repeats
    double last_frame = 0;
    c.port.OnComm = [&] {
        const double before = c.form.total_counts;
        c.form.run_event("OnComm", [&] { c.form.MSComm1_OnComm(); });
        if (c.form.total_counts != before) last_frame = monotonic_seconds();
        if (states.empty() || states.back() != c.form.b_state) states.push_back(c.form.b_state);
    };
    // Presses the spacebar to arm once the volume is out of the region the hold closes in.
    const auto arm = [&] {
        return c.run_until([&] { return c.ready_to_arm(); }, 8000) && (c.form.Form_KeyDown(32, 0), true);
    };
    const auto state_becomes = [&](int16_t state, int timeout_ms) {
        return c.run_until([&] { return c.form.b_state == state; }, timeout_ms);
    };
    // The simulator's side: breathing crosses 1.4 L; after the console's abort of the second
    // hold the patient signals distress; then the line is cut for a second.
    ASSERT_TRUE(c.sim.start(
        "breathing rest 1.0\nbreathing amplitude 0.8\nbreathing period 2.5\n"
        "await A\nawait A\nawait X\nwait 1\nswitch double\nwait 3\ncut 1\nwait 60\nquit\n",
        {QStringLiteral("--seed"), QStringLiteral("7")}));

    ASSERT_TRUE(c.link_up()) << "the link never came up";
    EXPECT_EQ(c.form.ComPort, 1);
    EXPECT_FALSE(c.form.settings_confirm);
    const QStringList start = c.sim.commands();
    EXPECT_EQ(start.mid(start.indexOf(QStringLiteral("L")), 7),
              (QStringList{"L", "T", "+", "-", "1", "V", "X"}));
    EXPECT_TRUE(start.contains(QStringLiteral("E")));

    // A complete hold: 1, 2, 4, 1, counted once.
    states = {c.form.b_state};  // the key may act before the next frame comes
    ASSERT_TRUE(arm());
    ASSERT_TRUE(state_becomes(4, 8000)) << "no hold began";
    ASSERT_TRUE(state_becomes(1, 6000)) << "the hold never ended";
    EXPECT_EQ(states, (std::vector<int16_t>{1, 2, 4, 1}));
    EXPECT_EQ(c.form.breath_holds, 1);
    EXPECT_EQ(c.form.Label2.Caption, QStringLiteral("Press spacebar to activate."));

    // The operator aborts the second hold.
    ASSERT_TRUE(arm());
    ASSERT_TRUE(state_becomes(4, 8000));
    c.form.Form_KeyDown(32, 0);
    ASSERT_TRUE(state_becomes(1, 3000));
    EXPECT_TRUE(c.form.Label2.Caption.startsWith(QStringLiteral("Breath hold aborted by user.")))
        << c.form.Label2.Caption.toStdString();
    EXPECT_EQ(c.form.breath_holds, 2);

    // The patient's double press: "X" goes out and the distress fault stands.
    ASSERT_TRUE(c.run_until([&] { return c.form.distress_fault; }, 4000));
    EXPECT_EQ(c.form.sw_state, 2);
    c.wait(300);
    const QStringList after = c.sim.commands();
    EXPECT_EQ(after.mid(after.lastIndexOf(QStringLiteral("A"))).count(QStringLiteral("X")), 2)
        << "the abort's X and the distress X";
    c.form.Form_KeyDown(32, 0);
    ASSERT_TRUE(c.run_until([&] { return c.form.sw_state == 1; }, 2000));

    // The cut: lost within 600 ms of the last frame, found again by the search.
    ASSERT_TRUE(c.run_until([&] { return c.form.Timer_module_connect->Enabled(); }, 6000));
    const double detected_after = monotonic_seconds() - last_frame;
    EXPECT_LE(detected_after, 0.650) << "s from the last frame to the loss";
    EXPECT_GT(detected_after, 0.250);
    const double counted = c.form.total_counts;
    ASSERT_TRUE(c.run_until([&] { return c.form.Timer_HeartBeat->Enabled() &&
                                         c.form.total_counts > counted + 10; },
                            10000))
        << "the module was not found again";
    EXPECT_TRUE(c.ended.empty()) << "the console ended";
}

}  // namespace
}  // namespace zel::test
