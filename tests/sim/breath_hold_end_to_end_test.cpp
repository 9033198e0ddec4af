// The console's link and cycle against the simulated module on a real pseudo-terminal, with
// the real serial adapter and the real timers: search, upload, stream, holds, distress and
// a cut line.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include "app/form1.h"
#include "fakes/fake_platform.h"
#include "platform/qt_serial_port.h"
#include "platform/qt_timer.h"
#include "sim/sim_process.h"
#include "sim/live_console.h"

namespace zel::test {
namespace {

struct Console {
    QTemporaryDir app_data;
    SimProcess sim{app_data.path()};
    FakePlatform fakes;
    QtSerialPort port{app_data.path()};
    QtTimerFactory timers;
    Platform platform{port,         timers,       fakes.clock,   fakes.locale, fakes.boxes,
                      fakes.chart,  fakes.tarrow, fakes.dialogs, fakes.windows};
    Form1 form{platform, app_data.path()};
    std::vector<int16_t> states;  // the balloon states as the console took them, without repeats
    QElapsedTimer clock;
    qint64 last_frame_ms = 0;

    Console() {
        form.end_program = [](int code) { ADD_FAILURE() << "the console ended with " << code; };
        form.Pic.Height = 7485;
        form.thresh_label.Height = 285;
        form.patient_defined = true;
        form.duration = 2;
        form.thresh = 1.4f;
        form.inhale = true;
        clock.start();
        port.OnComm = [this] {
            const double before = form.total_counts;
            form.run_event("OnComm", [this] { form.MSComm1_OnComm(); });
            if (form.total_counts != before) last_frame_ms = clock.elapsed();
            if (states.empty() || states.back() != form.b_state) states.push_back(form.b_state);
        };
    }
    // Runs the event loop until `done` or the time is up.
    bool run_until(const std::function<bool()>& done, int timeout_ms) {
        QElapsedTimer waited;
        waited.start();
        while (!done()) {
            if (waited.elapsed() > timeout_ms) return false;
            handle_events();
        }
        return true;
    }
    // Presses the spacebar to arm once the volume is out of the region the hold closes in.
    bool arm() {
        return run_until([this] { return form.b_state == 1 && !form.volume_in_threshold_region(); },
                         8000) &&
               (form.Form_KeyDown(32, 0), true);
    }
};

TEST(BreathHoldEndToEnd, finds_the_module_holds_aborts_signals_distress_and_survives_a_cut) {
    Console c;
    // The simulator's side: breathing crosses 1.4 L; after the console's abort of the second
    // hold the patient signals distress; then the line is cut for a second.
    ASSERT_TRUE(c.sim.start(
        "breathing rest 1.0\nbreathing amplitude 0.8\nbreathing period 2.5\n"
        "await A\nawait A\nawait X\nwait 1\nswitch double\nwait 3\ncut 1\nwait 60\nquit\n",
        {QStringLiteral("--seed"), QStringLiteral("7")}));

    c.form.start_module_search();
    ASSERT_TRUE(c.run_until([&] { return c.form.Timer_HeartBeat->Enabled() && c.form.total_counts > 10; },
                            10000))
        << "the link never came up";
    EXPECT_EQ(c.form.ComPort, 1);
    EXPECT_FALSE(c.form.settings_confirm);
    const QStringList start = c.sim.commands();
    ASSERT_GE(start.size(), 9);
    EXPECT_EQ(start.mid(start.indexOf(QStringLiteral("L")), 7),
              (QStringList{"L", "T", "+", "-", "1", "V", "X"}.mid(0, 7)));
    EXPECT_TRUE(start.contains(QStringLiteral("E")));

    // A complete hold: 1, 2, 4, 1, counted once.
    c.states = {c.form.b_state};  // the key may act before the next frame comes
    ASSERT_TRUE(c.arm());
    ASSERT_TRUE(c.run_until([&] { return c.form.b_state == 4; }, 8000)) << "no hold began";
    ASSERT_TRUE(c.run_until([&] { return c.form.b_state == 1; }, 6000)) << "the hold never ended";
    EXPECT_EQ(c.states, (std::vector<int16_t>{1, 2, 4, 1}));
    EXPECT_EQ(c.form.breath_holds, 1);
    EXPECT_EQ(c.form.Label2.Caption, QStringLiteral("Press spacebar to activate."));

    // The operator aborts the second hold.
    ASSERT_TRUE(c.arm());
    ASSERT_TRUE(c.run_until([&] { return c.form.b_state == 4; }, 8000));
    c.form.Form_KeyDown(32, 0);
    ASSERT_TRUE(c.run_until([&] { return c.form.b_state == 1; }, 3000));
    EXPECT_TRUE(c.form.Label2.Caption.startsWith(QStringLiteral("Breath hold aborted by user.")))
        << c.form.Label2.Caption.toStdString();
    EXPECT_EQ(c.form.breath_holds, 2);

    // The patient's double press: "X" goes out and the distress fault stands.
    ASSERT_TRUE(c.run_until([&] { return c.form.distress_fault; }, 4000));
    EXPECT_EQ(c.form.sw_state, 2);
    c.run_until([] { return false; }, 300);
    const QStringList after = c.sim.commands();
    EXPECT_EQ(after.mid(after.lastIndexOf(QStringLiteral("A"))).count(QStringLiteral("X")), 2)
        << "the abort's X and the distress X";
    c.form.Form_KeyDown(32, 0);
    ASSERT_TRUE(c.run_until([&] { return c.form.sw_state == 1; }, 2000));

    // The cut: lost within 600 ms of the last frame, found again by the search.
    ASSERT_TRUE(c.run_until([&] { return c.form.Timer_module_connect->Enabled(); }, 6000));
    const qint64 detected_after = c.clock.elapsed() - c.last_frame_ms;
    EXPECT_LE(detected_after, 650) << "ms from the last frame to the loss";
    EXPECT_GT(detected_after, 250);
    const double counted = c.form.total_counts;
    ASSERT_TRUE(c.run_until([&] { return c.form.Timer_HeartBeat->Enabled() &&
                                         c.form.total_counts > counted + 10; },
                            10000))
        << "the module was not found again";
    std::printf("[          ] link loss found %lld ms after the last frame\n",
                static_cast<long long>(detected_after));
}

}  // namespace
}  // namespace zel::test
