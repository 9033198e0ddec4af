#include "sim/live_console.h"

#include <time.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <cstdio>

namespace zel::test {

double monotonic_seconds() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + t.tv_nsec / 1e9;
}

void handle_events() {
    QTimer wake;
    wake.setSingleShot(true);
    wake.start(5);
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

void keep_event_loop_running(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

bool LiveConsole::run_until(const std::function<bool()>& done, int timeout_ms) {
    QElapsedTimer waited;
    waited.start();
    while (!done()) {
        if (waited.elapsed() > timeout_ms) return false;
        handle_events();
    }
    return true;
}

bool LiveConsole::link_up(int timeout_ms) {
    form.start_module_search();
    const bool up = run_until(
        [this] { return form.Timer_HeartBeat->Enabled() && form.total_counts > 10; }, timeout_ms);
    if (!up)
        std::fprintf(stderr, "link not up: port %d, %d notifications, zel_detect %d, checks %d%d%d%d, "
                     "battery %.2f line %.2f; module heard: %s\n",
                     form.ComPort, notifications, form.zel_detect, form.line_check,
                     form.battery_check, form.turbine_check, form.pneumatics_check,
                     form.battery_level, form.line_level, qPrintable(sim.commands().join(QLatin1Char(' '))));
    if (!up) std::fprintf(stderr, "wire: %s\n", qPrintable([&] { QFile f(sim.wire_log()); f.open(QIODevice::ReadOnly); return QString::fromLatin1(f.readAll().right(500)); }()));
    return up;
}

}  // namespace zel::test
