#pragma once
// The console's main window model over the real serial adapter on a pseudo-terminal, real
// timers and, if asked, the simulated gating library, against zelmoor-sim as a child process.
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "app/form1.h"
#include "fakes/fake_platform.h"
#include "fakes/rig.h"
#include "platform/qt_gating_library.h"
#include "platform/qt_serial_port.h"
#include "platform/qt_timer.h"
#include "sim/sim_process.h"

namespace zel::test {

double monotonic_seconds();
// Handles what is pending, or sleeps until something comes (at most a few milliseconds):
// a test that spins instead takes the processor from the simulator it waits for.
void handle_events();
// A nested event loop, as a modal dialog runs one.
void keep_event_loop_running(int milliseconds);
// A built gating library installed where the console looks for it, with the trainer's
// controls when given.
bool install_gating_library(const QString& app_data, const QString& library, const QByteArray& control = {});
// The call log of the simulated gating library: monotonic seconds and the call.
std::vector<std::pair<double, QString>> gating_calls(const QString& app_data);
// The files of the LOG folder by name, with their contents.
std::map<std::string, QByteArray> log_files(const QString& app_data);

// The real adapter, with every write stamped on the monotonic clock.
class WatchedPort final : public SerialPort {
public:
    explicit WatchedPort(SerialPort& inner_) : inner(inner_) { inner.OnComm = [this] { if (OnComm) OnComm(); }; }
    void set_CommPort(int number) override { inner.set_CommPort(number); }
    int CommPort() const override { return inner.CommPort(); }
    void set_PortOpen(bool open) override { inner.set_PortOpen(open); }
    bool PortOpen() const override { return inner.PortOpen(); }
    int InBufferCount() const override { return inner.InBufferCount(); }
    uint8_t Input() override { return inner.Input(); }
    bool Output(const QByteArray& bytes) override {
        writes.emplace_back(monotonic_seconds(), bytes);
        return inner.Output(bytes);
    }
    std::vector<std::pair<double, QByteArray>> writes;
    SerialPort& inner;
};

struct LiveConsole {
    // `chart`: a surface of the caller's in place of the recording fake, which keeps every
    // stroke and so grows without end over a long run.
    explicit LiveConsole(bool simulated_gating_library, ChartSurface* chart = nullptr)
        : use_real_library(simulated_gating_library), drawn_on(chart) {
        if (use_real_library) install_gating_library(app_data.path(), QStringLiteral(TARROW_SIM_PATH));
        form.end_program = [this](int code) { ended.push_back({code, monotonic_seconds()}); };
        form.Pic.Height = 7485;
        form.thresh_label.Height = 285;
        form.patient_defined = form.inhale = true, form.duration = 10, form.thresh = 1.4f;
        port.OnComm = [this] {
            ++notifications;
            form.run_event("MSComm1_OnComm", [this] { form.MSComm1_OnComm(); });
        };
    }
    // Runs the event loop until done() holds; false after the time.
    bool run_until(const std::function<bool()>& done, int timeout_ms);
    // Searches for the module until the stream runs.
    bool link_up(int timeout_ms = 10000);
    void wait(int ms) { run_until([] { return false; }, ms); }
    // The spacebar arms once the volume is out of the region the hold closes in.
    bool ready_to_arm() const { return form.b_state == 1 && !form.volume_in_threshold_region(); }
    QByteArray written_since(size_t write) const {
        QByteArray bytes;
        for (size_t k = write; k < port.writes.size(); ++k) bytes += port.writes[k].second;
        return bytes;
    }

    const bool use_real_library;
    ChartSurface* const drawn_on;
    QTemporaryDir app_data;
    SimProcess sim{app_data.path()};
    FakePlatform fakes;
    QtSerialPort real_port{app_data.path()};
    WatchedPort port{real_port};
    QtTimerFactory timers;
    QtGatingLibrary real_library{app_data.path()};
    Platform platform{port, timers, fakes.clock, fakes.locale, fakes.boxes, drawn_on ? *drawn_on : fakes.chart,
                      use_real_library ? static_cast<GatingLibrary&>(real_library) : fakes.tarrow,
                      fakes.dialogs, fakes.windows};
    Form1 form{platform, app_data.path()};
    std::vector<std::pair<int, double>> ended;  // end_program calls with their moments
    int notifications = 0;
};

}  // namespace zel::test
