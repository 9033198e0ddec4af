#include "sim/live_console.h"

#include <time.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

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
    return run_until([this] { return form.Timer_HeartBeat->Enabled() && form.total_counts > 10; },
                     timeout_ms);
}

}  // namespace zel::test
