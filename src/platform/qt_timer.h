#pragma once
#include <QTimer>

#include "platform/timer.h"

namespace zel {

class QtTimer final : public Timer {
public:
    QtTimer();
    void set_Interval(int milliseconds) override;
    int Interval() const override { return interval; }
    void set_Enabled(bool enabled) override;
    bool Enabled() const override { return enabled; }

private:
    void apply();
    QTimer timer;
    int interval = 0;
    bool enabled = false;
};

class QtTimerFactory final : public TimerFactory {
public:
    std::unique_ptr<Timer> create(const char* name) override;
};

}  // namespace zel
