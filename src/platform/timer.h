#pragma once
// A window timer: an interval, on or off, and a tick handler. An interval of 0 never ticks.
#include <functional>
#include <memory>

namespace zel {

class Timer {
public:
    virtual ~Timer() = default;
    virtual void set_Interval(int milliseconds) = 0;
    virtual int Interval() const = 0;
    virtual void set_Enabled(bool enabled) = 0;
    virtual bool Enabled() const = 0;

    std::function<void()> on_tick;
};

class TimerFactory {
public:
    virtual ~TimerFactory() = default;
    // `name` is the timer's control name; fakes use it to hand the timer to a test.
    virtual std::unique_ptr<Timer> create(const char* name) = 0;
};

}  // namespace zel
