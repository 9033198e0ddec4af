// The console against the simulator in its headless mode on a real pseudo-terminal, with the
// real serial adapter and frame reception: the frames one by one, the search's pace, and the
// whole link and cycle over real timers (search, upload, stream, holds, distress, a cut line).
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFileInfo>

#include "sim/curve_against_wire.h"
#include "sim/live_console.h"

namespace zel::test {
namespace {

TEST(SimulatorOnPseudoTerminal,
     the_console_reads_500_frames_in_order_and_rejects_each_corrupt_one) {
    constexpr size_t wanted = 500;
    LiveConsole c(false);
    // One frame in ten with a wrong checksum, from the start of the stream.
    ASSERT_TRUE(c.sim.start("await E\ncorrupt 0.1\n", {QStringLiteral("--seed"), QStringLiteral("4")}));
    std::vector<int> received;
    c.port.OnComm = [&] {
        if (received.size() == wanted) return;
        const double before = c.form.total_counts;
        c.form.MSComm1_OnComm();
        if (c.form.total_counts != before) received.push_back(qRound(c.form.volume / 0.004));
    };
    const QString link = c.app_data.filePath(QStringLiteral("ports/sim0"));
    c.port.set_CommPort(1);
    c.port.set_PortOpen(true);
    ASSERT_TRUE(QFileInfo(link).symLinkTarget().endsWith(c.real_port.device_path()));
    c.port.Output("E");
    ASSERT_TRUE(c.run_until([&] { return received.size() == wanted; }, 30000));
    c.port.Output("d");
    c.port.set_PortOpen(false);
    c.sim.stop();
    EXPECT_FALSE(QFileInfo(link).isSymLink()) << "the simulator leaves its link behind";
    EXPECT_TRUE(c.ended.empty());

    // The frames the console should have taken: every good one up to the 500th, in order.
    std::vector<int> good;
    int corrupt = 0;
    for (const WireFrame& f : wire_frames(c.sim.wire_log())) {
        if (good.size() == wanted) break;
        // Rejections are logged once the first frame has been counted.
        corrupt += f.corrupt && !good.empty();
        if (!f.corrupt) good.push_back(f.units);
    }
    EXPECT_EQ(received, good);
    EXPECT_TRUE(corrupt >= 25 && corrupt <= 80) << corrupt;
    qsizetype logged = 0;
    for (const auto& [name, bytes] : log_files(c.app_data.path())) logged += bytes.count("------\r\n");
    EXPECT_EQ(logged, corrupt);
}

// The search lists the ports by trying to open each of twenty numbers in one tick of its
// 350 ms timer. A pass that overran the tick made the next tick fall due at once, which closed
// the simulator's port a moment after its "V" went out, every pass: the module was never heard.
TEST(SimulatorOnPseudoTerminal, the_search_lists_twenty_port_numbers_well_inside_one_tick) {
    LiveConsole c(false);
    ASSERT_TRUE(c.sim.start("wait 60\nquit\n"));
    for (int pass = 0; pass < 5; ++pass) {
        QElapsedTimer took;
        took.start();
        c.form.enumerate_com_ports();
        // The first pass also loads the device database.
        EXPECT_LT(took.elapsed(), pass == 0 ? 300 : 100) << "pass " << pass;
        ASSERT_TRUE(c.form.num_ports >= 1 && c.form.port_list[0] == 1) << "the simulator's link comes first";
    }
}

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
    EXPECT_TRUE(c.form.ComPort == 1 && !c.form.settings_confirm) << "port " << c.form.ComPort;
    const QStringList start = c.sim.commands();
    EXPECT_EQ(start.mid(start.indexOf(QStringLiteral("L")), 7),
              (QStringList{"L", "T", "+", "-", "1", "V", "X"}));

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
    EXPECT_TRUE(detected_after > 0.250 && detected_after <= 0.650) << detected_after << " s after the last frame";
    const double counted = c.form.total_counts;
    ASSERT_TRUE(c.run_until([&] { return c.form.Timer_HeartBeat->Enabled() &&
                                         c.form.total_counts > counted + 10; }, 10000))
        << "the module was not found again";
    EXPECT_TRUE(c.ended.empty()) << "the console ended";
}

}  // namespace
}  // namespace zel::test
