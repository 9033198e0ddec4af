#include "app/form1.h"

#include "language/messages.h"

namespace zel {

namespace {
std::unique_ptr<Timer> make_timer(Form1& form, const char* name, int interval, bool enabled,
                                  void (Form1::*handler)()) {
    auto timer = form.platform.timers.create(name);
    timer->set_Interval(interval);
    timer->set_Enabled(enabled);
    if (handler) timer->on_tick = [&form, name, handler] { form.run_event(name, [&] { (form.*handler)(); }); };
    return timer;
}
}  // namespace

Form1::Form1(Platform& platform_, QString app_data_path)
    : platform(platform_), AppDataPath(std::move(app_data_path)) {
    set_design_values();
    Timer_module_connect = make_timer(*this, "Timer_module_connect", 350, false,
                                      &Form1::Timer_module_connect_Timer);
    Timer_HeartBeat = make_timer(*this, "Timer_HeartBeat", 300, false, &Form1::Timer_HeartBeat_Timer);
    Timer1 = make_timer(*this, "Timer1", 500, false, &Form1::Timer1_Timer);
    pauseBeamTimer = make_timer(*this, "pauseBeamTimer", 4000, false, &Form1::pauseBeamTimer_Timer);
    Timer_form13_close_delay = make_timer(*this, "Timer_form13_close_delay", 600, false,
                                          &Form1::Timer_form13_close_delay_Timer);
    logo_banner = make_timer(*this, "logo_banner", 1000, true, &Form1::logo_banner_Timer);
    Timer2 = make_timer(*this, "Timer2", 10000, true, &Form1::Timer2_Timer);
}

Form1::~Form1() { close_run_files(); }

// Closed without a report: this runs on the way out, after a failure or at the end.
void Form1::close_run_files() {
    if (checksum_log_open && checksum_log) {
        checksum_log.reset();
        checksum_log_open = false;
    }
    curve_file.reset();
}

namespace {
// Each step of the stop runs even when one before it failed.
template <class Step>
void regardless(Step&& step) {
    try {
        step();
    } catch (...) {
    }
}
}  // namespace

void Form1::halt_timers() {
    for (const auto* timer : {&Timer_module_connect, &Timer_HeartBeat, &Timer1, &pauseBeamTimer,
                              &Timer_form13_close_delay, &logo_banner, &Timer2})
        if (*timer) regardless([&] { (*timer)->set_Enabled(false); });
    if (form_gating) regardless([&] { form_gating->Timer_Tarrow_Diagnostics->set_Enabled(false); });
}

bool Form1::relay_may_be_closed() const {
    return (Gated_Treatment && b_state > 1) || relay_close_commanded;
}

void Form1::stop_after_failure() {
    stopped_by_failure = true;
    halt_timers();
    // The beam goes off before anything else: the relay closed is the beam on.
    const bool relay_was_closable = relay_may_be_closed();
    if (relay_was_closable) regardless([&] { _Tarrow_SetRelayState(0); });
    if (relay_was_closable || Gated_Treatment) regardless([&] { platform.tarrow.Close(); });
    regardless([&] {
        if (platform.serial.PortOpen()) platform.serial.set_PortOpen(false);
    });
    regardless([&] { close_run_files(); });
}

void Form1::end_on_signal(int signal_number) {
    // A second signal while the first is dealt with, or one behind a failure report: the end
    // under way goes on.
    if (stopped_by_failure) return;
    stopped_by_failure = true;
    halt_timers();
    const bool relay_was_closable = relay_may_be_closed();
    if (relay_was_closable) regardless([&] { _Tarrow_SetRelayState(0); });
    // The module lets the balloon go and stops streaming; the console will not be there to.
    regardless([&] {
        if (!platform.serial.PortOpen()) return;
        if (b_state > 1) platform.serial.Output(QByteArrayLiteral("X"));
        platform.serial.Output(QByteArrayLiteral("d"));
    });
    regardless([&] { close_curve_file_read_only(); });
    if (relay_was_closable || Gated_Treatment) regardless([&] { platform.tarrow.Close(); });
    regardless([&] { close_run_files(); });
    regardless([&] {
        if (platform.serial.PortOpen()) platform.serial.set_PortOpen(false);
    });
    regardless([&] {
        if (hhkLowLevelKybd) platform.windows.remove_key_guard();
        hhkLowLevelKybd = false;
    });
    if (end_program) end_program(128 + signal_number);
}

void Form1::run_event(const char* source, const std::function<void()>& handler) {
    // Behind a failure report nothing runs: not a frame, a tick, a key or a menu.
    if (stopped_by_failure) return;
    const QString report = run_time_error(source, handler);
    if (report.isNull()) return;
    // A handler resumed behind the report (a modal dialog it had opened was ended with the
    // program) may fail again: the one report has been made.
    if (stopped_by_failure) return;
    stop_after_failure();
    platform.boxes.MsgBox(report, vbCritical, message_text(108).trimmed());
    if (end_program) end_program(1);
}

}  // namespace zel
