// Beam-off latency: from the moment the simulated module has written the frame that ends a
// gated hold to the console's call that opens the relay, over many holds run back to back.
// The console runs over the real serial adapter, real timers and the simulated gating
// library; both sides stamp the machine's monotonic clock.
//
//   zel_beam_latency [holds]        default 200
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <sched.h>
#include <time.h>

#include <algorithm>
#include <cstdio>

#include "app/form1.h"
#include "fakes/fake_platform.h"
#include "language/messages.h"
#include "platform/qt_gating_library.h"
#include "platform/qt_serial_port.h"
#include "platform/qt_timer.h"
#include "platform/scheduling.h"
#include "sim/sim_process.h"

namespace {

double monotonic_seconds() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

// Times at which a write carried the first standby frame after a hold.
std::vector<double> hold_end_writes(const QString& write_log) {
    std::vector<double> ends;
    QFile file(write_log);
    if (!file.open(QIODevice::ReadOnly)) return ends;
    int last_state = 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> words = line.simplified().split(' ');
        if (words.size() < 2) continue;
        std::vector<int> bytes;
        for (qsizetype k = 1; k < words.size(); ++k) bytes.push_back(words[k].toInt(nullptr, 16));
        for (size_t k = 0; k + 8 <= bytes.size(); ++k) {
            if (bytes[k] != 131) continue;
            int sum = 0;
            for (size_t j = k; j < k + 8; ++j) sum += bytes[j];
            if (sum % 256 != 0) continue;
            const int state = bytes[k + 2];
            if (state == 1 && last_state == 4) ends.push_back(words[0].toDouble());
            last_state = state;
            k += 7;
        }
    }
    return ends;
}

// Every call of the gating library: its monotonic time and its text.
std::vector<std::pair<double, QByteArray>> library_calls(const QString& call_log) {
    std::vector<std::pair<double, QByteArray>> calls;
    QFile file(call_log);
    if (!file.open(QIODevice::ReadOnly)) return calls;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() >= 3) calls.emplace_back(words[0].toDouble(), words[2]);
    }
    return calls;
}

std::vector<double> relay_open_calls(const std::vector<std::pair<double, QByteArray>>& calls) {
    std::vector<double> opens;
    for (const auto& [when, call] : calls)
        if (call.contains("SetRelayState(0)")) opens.push_back(when);
    return opens;
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QCoreApplication app(argc, argv);
    // The console in the same place in the scheduler as the program gives itself.
    std::printf("scheduling: %s\n", qPrintable(zel::raise_scheduling_priority()));
    const int wanted = argc > 1 ? std::atoi(argv[1]) : 200;
    zel::load_default_messages();

    QTemporaryDir app_data;
    QDir().mkpath(app_data.filePath(QStringLiteral("lib")));
    QFile::copy(QStringLiteral(TARROW_SIM_PATH), app_data.filePath(QStringLiteral("lib/libtarrow.so")));
    zel::test::SimProcess sim(app_data.path());
    const QString write_log = app_data.filePath(QStringLiteral("writes.log"));
    if (!sim.start("breathing rest 0.5\nbreathing amplitude 0.9\nbreathing period 2.0\n"
                   "wait 86400\nquit\n",
                   {QStringLiteral("--write-log"), write_log})) {
        std::fprintf(stderr, "the simulator did not start\n");
        return 1;
    }
    // The simulator stands in for a device whose frames the host's load can not hold back: at
    // a real-time priority above the console's, its stamp and its write stay together.
    const sched_param device{20};
    if (sched_setscheduler(static_cast<pid_t>(sim.pid()), SCHED_FIFO, &device) != 0)
        std::printf("the simulator runs at ordinary priority: host load delays its frames\n");

    zel::test::FakePlatform fakes;
    zel::QtSerialPort port(app_data.path());
    zel::QtTimerFactory timers;
    zel::QtGatingLibrary tarrow(app_data.path());
    zel::Platform platform{port,        timers, fakes.clock,   fakes.locale, fakes.boxes,
                           fakes.chart, tarrow, fakes.dialogs, fakes.windows};
    zel::Form1 form(platform, app_data.path());
    form.end_program = [](int code) { std::exit(code); };
    form.Pic.Height = 7485;
    form.patient_defined = true;
    form.Gated_Treatment = true;
    form.duration = 1;
    form.thresh = 0.9f;
    int holds = 0;
    int16_t state = 0;
    // When the console took each notification, and when it handled each hold's end.
    std::vector<double> notified, handled;
    port.OnComm = [&] {
        notified.push_back(monotonic_seconds());
        form.run_event("OnComm", [&] { form.MSComm1_OnComm(); });
        if (state == 4 && form.b_state == 1) {
            ++holds;
            handled.push_back(monotonic_seconds());
        }
        state = form.b_state;
    };
    form.start_module_search();
    QElapsedTimer clock;
    clock.start();
    while (holds < wanted && clock.elapsed() < 60000 + wanted * 10000LL) {
        // Sleeps until the next event, as the program's own event loop does: a loop that
        // spins at a real-time priority is throttled by the kernel (50 ms of each second by
        // default) and would measure the throttling, not the console.
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        if (form.Timer_HeartBeat->Enabled() && form.b_state == 1 && form.sw_state == 1 &&
            !form.volume_in_threshold_region())
            form.Form_KeyDown(32, 0);
    }
    sim.stop();

    const std::vector<double> ends = hold_end_writes(write_log);
    const auto calls = library_calls(app_data.filePath(QStringLiteral("sim/tarrow-calls.log")));
    const std::vector<double> opens = relay_open_calls(calls);
    std::vector<double> latencies, console_part;
    for (double end : ends) {
        const auto open = std::lower_bound(opens.begin(), opens.end(), end);
        if (open == opens.end() || *open - end >= 1.0) {
            std::printf("hold end at %.3f s without a relay opening; relay calls around it:", end);
            for (const auto& [when, call] : calls)
                if (call.contains("SetRelayState") && when >= end - 3 && when <= end + 1)
                    std::printf(" %+.1f ms %s", (when - end) * 1000, call.constData());
            std::printf("\n");
            continue;
        }
        latencies.push_back((*open - end) * 1000);
        // The console's own part: from the notification that brought the frame to the call.
        const auto note = std::lower_bound(notified.begin(), notified.end(), end);
        if (note != notified.end() && *note <= *open) console_part.push_back((*open - *note) * 1000);
        if (*open - end < 0.002) continue;
        // A slow one: what the console asked of the library just before and meanwhile.
        const auto took = std::lower_bound(handled.begin(), handled.end(), end);
        const auto first_note = std::lower_bound(notified.begin(), notified.end(), end);
        std::printf("slow hold end at %.3f s: %.3f ms; first notification after it %+.1f ms, "
                    "handled %+.1f ms; library calls from 50 ms before:",
                    end, (*open - end) * 1000,
                    first_note == notified.end() ? -1.0 : (*first_note - end) * 1000,
                    took == handled.end() ? -1.0 : (*took - end) * 1000);
        for (const auto& [when, call] : calls)
            if (when >= end - 0.05 && when <= *open)
                std::printf(" %+.1f ms %s", (when - end) * 1000, call.constData());
        std::printf("\n");
    }
    if (latencies.empty()) {
        std::fprintf(stderr, "no hold was measured (%d holds seen)\n", holds);
        return 1;
    }
    std::printf("holds ended: %zu, measured: %zu, in %.0f s\n", ends.size(), latencies.size(),
                clock.elapsed() / 1000.0);
    auto report = [](const char* what, std::vector<double> v) {
        if (v.empty()) return;
        std::sort(v.begin(), v.end());
        auto at = [&](double q) { return v[static_cast<size_t>(q * (v.size() - 1))]; };
        std::printf("%s ms: min %.3f  median %.3f  p90 %.3f  p99 %.3f  max %.3f\n", what,
                    v.front(), at(0.5), at(0.9), at(0.99), v.back());
    };
    report("beam-off latency", latencies);
    // Where the two differ, the time went before the console was woken: in the line's delivery.
    report("of which the console's own part", console_part);
    return 0;
}
