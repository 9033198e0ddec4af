#pragma once
// Fakes of everything outside the process, for tests without a display or a device.
#include <QDateTime>
#include <QStringList>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "fakes/fake_file_dialogs.h"
#include "fakes/fake_gating_library.h"
#include "fakes/fake_windows.h"
#include "fakes/qt_printers.h"
#include "fakes/scripted.h"
#include "platform/platform.h"

namespace zel::test {

// Serial port without a device.
//   receive(bytes)   the bytes arrive and one notification follows
//   arrive(bytes)    the bytes arrive without a notification
//   notify()         one notification, as the driver gives for waiting bytes
//   drain()          notifications until nothing waits (the driver's re-notification)
//   sent()           everything the console wrote, in order
//   fail_open(n)     port number n refuses to open, as a port held by another program
//   deny_open(n, refusal)   port number n exists, but this user may not open it, for that reason
//   ports(n)         how many port numbers exist (others give an invalid-port error)
//   fail_writes      every write fails, as on a line whose adapter was pulled out
class FakeSerialPort final : public SerialPort {
public:
    void set_CommPort(int number) override;
    int CommPort() const override { return port_number; }
    void set_PortOpen(bool open) override;
    bool PortOpen() const override { return is_open; }
    int InBufferCount() const override { return static_cast<int>(inbox.size()); }
    uint8_t Input() override { return next_of(inbox, uint8_t{0}); }
    bool Output(const QByteArray& bytes) override;

    void receive(const QByteArray& bytes) { arrive(bytes); notify(); }
    void arrive(const QByteArray& bytes) { inbox.insert(inbox.end(), bytes.begin(), bytes.end()); }
    void notify() { ++notifications; if (OnComm) OnComm(); }
    void drain() { while (!inbox.empty()) notify(); }
    const QByteArray& sent() const { return output; }
    void clear_sent() { output.clear(); }
    void fail_open(int number) { refusing.push_back(number); }
    void deny_open(int number, const PortRefusal& why) { denied[number] = why; }
    PortRefusal refusal() const override { return last_refusal; }
    void ports(int count) { port_count = count; }

    int notifications = 0;
    bool fail_writes = false;

private:
    std::deque<uint8_t> inbox;
    QByteArray output;
    std::vector<int> refusing;
    std::map<int, PortRefusal> denied;
    PortRefusal last_refusal;
    int port_number = 1;
    int port_count = 20;
    bool is_open = false;
};

// Timers ticked by hand. `get(name)` finds a timer by its control name.
class FakeTimer final : public Timer {
public:
    void set_Interval(int milliseconds) override { interval = milliseconds; }
    int Interval() const override { return interval; }
    void set_Enabled(bool enabled) override { is_enabled = enabled; }
    bool Enabled() const override { return is_enabled; }
    // Runs the tick handler if the timer is on and has an interval, as a real timer would.
    void tick() { if (is_enabled && interval > 0 && on_tick) on_tick(); }

private:
    int interval = 0;
    bool is_enabled = false;
};

class FakeTimerFactory final : public TimerFactory {
public:
    std::unique_ptr<Timer> create(const char* name) override;
    FakeTimer& get(const std::string& name) { return *by_name.at(name); }

private:
    std::map<std::string, FakeTimer*> by_name;
};

class FakeClock final : public Clock {
public:
    QDateTime now() const override { return when; }
    QDateTime when{QDate(2026, 11, 22), QTime(9, 5, 7)};
};

// English formats; the decimal separator is set by the test.
class FakeLocale final : public Locale {
public:
    QChar decimal_separator() const override { return separator; }
    QString long_date(const QDate& date) const override;
    QString medium_date(const QDate& date) const override;
    QString medium_time(const QTime& time) const override;
    QString general_date(const QDateTime& when) const override;
    QChar separator = QLatin1Char('.');
};

// Message boxes answered from a script; every box shown is kept.
class FakeMessageBoxes final : public MessageBoxes {
public:
    int MsgBox(const QString& prompt, int style, const QString& title) override;
    void answer(int result) { answers.push_back(result); }
    // The next prompt returns `text`; an unscripted prompt is cancelled.
    QString InputBox(const QString& prompt) override;
    void type(const QString& text) { typed.push_back(text); }
    void notice(const QString& text) override { notices.append(text); }
    QStringList prompts;
    QStringList shown;
    QStringList notices;                // the boxes that stood beside the work
    std::vector<int> styles;            // the style of each box shown
    std::function<void()> while_shown;  // runs inside the box, as the nested event loop would

private:
    std::deque<int> answers;
    std::deque<QString> typed;
};

// A chart surface that records every drawing operation as one line of text:
//   scale x1 y1 x2 y2 | clear | style dotted|solid | width n | fore r,g,b
//   line x1 y1 x2 y2 [r,g,b] | box x1 y1 x2 y2 r,g,b
class RecordingSurface final : public ChartSurface {
public:
    void set_scale(double x1, double y1, double x2, double y2) override;
    void clear() override;
    void set_line_style(LineStyle style) override;
    void set_line_width(int pixels) override;
    void set_fore_color(Rgb colour) override;
    void line(double x1, double y1, double x2, double y2) override;
    void line(double x1, double y1, double x2, double y2, Rgb colour) override;
    void box(double x1, double y1, double x2, double y2, Rgb colour) override;

    // A drawn line or box with the pen in force when it was drawn.
    struct Stroke {
        bool is_box = false;
        double x1, y1, x2, y2;
        Rgb colour;
        LineStyle style;
        int width;
    };
    std::vector<Stroke> strokes;  // since the last clear
    QStringList log;              // everything, in order
    int clears = 0;

private:
    LineStyle style = LineStyle::solid;
    int width = 1;
    Rgb fore{0, 0, 0};
    void stroke(const char* kind, bool is_box, double x1, double y1, double x2, double y2,
                Rgb colour, bool coloured = false);
};

// All fakes; a test or benchmark may draw on a chart surface of its own instead.
struct FakePlatform {
    explicit FakePlatform(ChartSurface* other_chart = nullptr) : drawn_on(other_chart) {}
    FakeSerialPort serial;
    FakeTimerFactory timers;
    FakeClock clock;
    FakeLocale locale;
    FakeMessageBoxes boxes;
    RecordingSurface chart;
    FakeGatingLibrary tarrow;
    FakeFileDialogs dialogs;
    FakeWindows windows;
    ChartSurface* drawn_on;
    Platform platform{serial, timers, clock,   locale, boxes, drawn_on ? *drawn_on : chart,
                      tarrow, dialogs, windows};
};

}  // namespace zel::test
