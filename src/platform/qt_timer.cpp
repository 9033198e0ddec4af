#include "platform/qt_timer.h"

namespace zel {

QtTimer::QtTimer() {
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, [this] {
        if (on_tick) on_tick();
    });
}

void QtTimer::set_Interval(int milliseconds) {
    interval = milliseconds;
    apply();
}

void QtTimer::set_Enabled(bool on) {
    enabled = on;
    apply();
}

// Turning a timer on, or changing its interval, starts its count afresh.
void QtTimer::apply() {
    if (enabled && interval > 0)
        timer.start(interval);
    else
        timer.stop();
}

std::unique_ptr<Timer> QtTimerFactory::create(const char*) { return std::make_unique<QtTimer>(); }

}  // namespace zel
