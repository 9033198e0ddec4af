// Builds the platform, the main window's model and its view, and starts the console.
#include <QApplication>
#include <QDir>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "app/command_line.h"
#include "app/form1.h"
#include "app/relay_guard.h"
#include "check_mode.h"
#include "data/file_access.h"
#include "language/messages.h"
#include "platform/exit_signals.h"
#include "platform/qt_chart_surface.h"
#include "platform/qt_file_dialogs.h"
#include "platform/qt_gating_library.h"
#include "platform/qt_serial_port.h"
#include "platform/qt_single_console.h"
#include "platform/qt_system.h"
#include "platform/qt_timer.h"
#include "platform/scheduling.h"
#include "review_mode.h"
#include "stats_mode.h"
#include "ui/form1_view.h"
#include "ui/images.h"
#include "ui/qt_windows.h"

int main(int argc, char** argv) {
    // Patient data is no business of the machine's other users, whatever mask the session gave.
    zel::tighten_umask();
    // The command line is read before any window system is needed: --help, --version,
    // --check, --stats and a wrong option work on a machine without a display, and none of
    // them starts the console.
    QStringList args;
    for (int k = 1; k < argc; ++k) args.append(QString::fromLocal8Bit(argv[k]));
    const zel::CommandLine line = zel::parse_command_line(args);
    const QString app_data_path = QDir::homePath() + QStringLiteral("/.local/share/zelmoor");
    switch (line.mode) {
        case zel::CommandLine::Mode::help:
            std::fputs(qPrintable(zel::console_help_text()), stdout);
            return 0;
        case zel::CommandLine::Mode::version:
            std::fputs(qPrintable(zel::console_version_text(QStringLiteral(ZEL_PACKAGE_VERSION))),
                       stdout);
            return 0;
        case zel::CommandLine::Mode::usage_error:
            std::fprintf(stderr, "zelmoor: %s\n%s", qPrintable(line.error),
                         qPrintable(zel::console_usage_text()));
            return 2;
        case zel::CommandLine::Mode::check: {
            QCoreApplication core(argc, argv);
            return zel::run_check(app_data_path, line.folder);
        }
        case zel::CommandLine::Mode::stats: {
            QCoreApplication core(argc, argv);
            return zel::run_stats(app_data_path, line.files, line.csv);
        }
        case zel::CommandLine::Mode::review:
        case zel::CommandLine::Mode::console:
            break;
    }
    QApplication app(argc, argv);
    // zelmoor --review FILE...: the review window alone, on those curve files.
    if (line.mode == zel::CommandLine::Mode::review)
        return zel::run_review(app_data_path, line.files);
    // The application folder is the installation's: it exists before the console first runs.
    QDir().mkpath(app_data_path);
    zel::QtSingleConsole single_console(app_data_path);
    if (!single_console.take()) {
        const qint64 running = single_console.running_console();
        const bool raised = single_console.raise_running_console();
        std::fprintf(stderr, "zelmoor: a console is already running (process %lld)%s; this one ends\n",
                     static_cast<long long>(running),
                     raised ? ": its window was brought to the front" : "");
        return 1;
    }
    std::fprintf(stderr, "zelmoor: %s\n", qPrintable(zel::raise_scheduling_priority()));
    zel::init_images();

    zel::QtSerialPort serial(app_data_path);
    zel::QtTimerFactory timers;
    zel::QtClock clock;
    zel::QtLocale locale;
    zel::QtMessageBoxes boxes;
    zel::QtChartSurface chart(870, 499);
    zel::QtGatingLibrary tarrow(app_data_path);
    zel::QtFileDialogs dialogs;
    // The windows need the model and the model needs the windows: the model reaches them
    // through this forwarder, filled in once the view exists.
    struct LateWindows final : zel::Windows {
        zel::Windows* target = nullptr;
        void show_modal(zel::Window w) override { target->show_modal(w); }
        void show_modeless(zel::Window w) override { target->show_modeless(w); }
        void unload(zel::Window w) override { target->unload(w); }
        void show_main_window(bool v) override { target->show_main_window(v); }
        int ask(const QString& c, const QString& q, const QStringList& b) override {
            return target->ask(c, q, b);
        }
        int show_message(zel::Window w, const QString& c, const QStringList& t,
                         const QStringList& b) override {
            return target->show_message(w, c, t, b);
        }
        bool install_key_guard() override { return target->install_key_guard(); }
        void remove_key_guard() override { target->remove_key_guard(); }
    } windows;
    zel::Platform platform{serial, timers, clock, locale, boxes, chart, tarrow, dialogs, windows};

    zel::load_default_messages();
    zel::Form1 form(platform, app_data_path);
    bool ended = false;
    int exit_code = 0;
    form.end_program = [&](int code) {
        ended = true;
        exit_code = code;
        // After a failure report the process ends here: leaving through the event loops would
        // resume the handlers that opened a dialog further up the stack. Relay, port and files
        // were dealt with before the report.
        if (code != 0) {
            std::fflush(nullptr);
            std::_Exit(code);
        }
        QApplication::exit(code);
    };
    // From here on no way out of the process leaves the relay closed: a signal from the system
    // ends the console as a failure would, without the report; any other exit that still runs
    // code opens the relay on the way.
    zel::RelayGuard relay_guard(form);
    zel::ExitSignals exit_signals([&form](int signal_number) {
        std::fprintf(stderr, "zelmoor: %s: the console ends, the gating relay opened first\n",
                     strsignal(signal_number));
        form.end_on_signal(signal_number);
    });
    serial.OnComm = [&form] {
        form.run_event("MSComm1_OnComm", [&form] { form.MSComm1_OnComm(); });
    };

    zel::Form1View view(form, chart);
    // A second start asks for the console: what stands on top (a dialog, or the main window)
    // comes to the front.
    single_console.on_raise_request = [&view] {
        QWidget* top = QApplication::activeModalWidget();
        if (!top && view.isVisible()) top = &view;
        if (top) {
            if (top->isMinimized()) top->showNormal();
            top->raise();
            top->activateWindow();
        }
        std::fprintf(stderr, "zelmoor: another start asked for the console: brought to the front\n");
    };
    zel::QtWindows qt_windows(form, view);
    windows.target = &qt_windows;
    boxes.parent = &view;
    dialogs.parent = &view;
    form.run_event("Form_Load", [&form] { form.Form_Load(); });
    if (ended) return exit_code;
    return app.exec();
}
