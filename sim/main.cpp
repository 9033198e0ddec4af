// zelmoor-sim: the control module on a pseudo-terminal, driven from a window or, with
// --headless, from a script alone.
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QSocketNotifier>
#include <QTextStream>
#include <cstdio>
#include <memory>

#include "sim_host.h"
#include "sim_window.h"

namespace {

int signal_pipe[2] = {-1, -1};

void on_signal(int) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t ignored = ::write(signal_pipe[1], &byte, 1);
}

// SIGINT, SIGTERM and SIGHUP end the program through the event loop, so that the port's
// link is removed.
void quit_on_signals(QCoreApplication& app) {
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signal_pipe) != 0) return;
    auto* notifier = new QSocketNotifier(signal_pipe[0], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, &QCoreApplication::quit);
    struct sigaction action {};
    action.sa_handler = on_signal;
    sigemptyset(&action.sa_mask);
    for (int s : {SIGINT, SIGTERM, SIGHUP}) sigaction(s, &action, nullptr);
}

void fail(const QString& text) { std::fprintf(stderr, "zelmoor-sim: %s\n", qPrintable(text)); }

// Runs the lines of the script given by the user; "-" reads standard input as it comes.
bool start_script(const QString& path, zelsim::SimHost& host, QCoreApplication& app) {
    if (path.isEmpty()) return true;
    if (path == QStringLiteral("-")) {
        auto* notifier = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, &app);
        auto pending = std::make_shared<QByteArray>();
        QObject::connect(notifier, &QSocketNotifier::activated, &app, [notifier, pending, &host] {
            char buffer[512];
            const ssize_t n = ::read(STDIN_FILENO, buffer, sizeof buffer);
            if (n <= 0) {
                notifier->setEnabled(false);
                return;
            }
            pending->append(buffer, n);
            for (qsizetype end; (end = pending->indexOf('\n')) >= 0;) {
                const QString line = QString::fromUtf8(pending->left(end));
                pending->remove(0, end + 1);
                if (const QString error = host.run_line(line); !error.isEmpty())
                    fail(QStringLiteral("%1: %2").arg(line.trimmed(), error));
            }
        });
        return true;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        fail(path + QStringLiteral(": ") + file.errorString());
        return false;
    }
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    // The whole script is checked before any of it runs.
    bool good = true;
    for (int k = 0; k < lines.size(); ++k) {
        const auto parsed = zelsim::parse_script_line(lines[k].toStdString());
        if (!parsed.error.empty()) {
            fail(QStringLiteral("%1:%2: %3")
                     .arg(path)
                     .arg(k + 1)
                     .arg(QString::fromStdString(parsed.error)));
            good = false;
        }
    }
    if (!good) return false;
    for (const QString& line : lines) host.run_line(line);
    return true;
}

const char usage_line[] = "Usage: zelmoor-sim [OPTION]...\n";

const char help_text[] =
    "The control module of the Zelmoor breath-hold device, simulated on a pseudo-terminal\n"
    "that is linked as <app-data>/ports/<name>, where the console looks for its ports. It\n"
    "sends a data frame every 20 ms and answers the console's commands; a window (or, with\n"
    "--headless, a script) works the patient's switch, the faults and the line.\n"
    "\n"
    "Options:\n"
    "      --headless          no window; controls come from the script\n"
    "      --script FILE       script of controls; - reads standard input\n"
    "      --app-data FOLDER   the console's application data folder\n"
    "                          (default ~/.local/share/zelmoor)\n"
    "      --port-name NAME    name of the link in <app-data>/ports/ (default sim0)\n"
    "      --seed N            seed of the breathing and of the line faults (default 1)\n"
    "      --command-log FILE  log of received commands\n"
    "                          (default <app-data>/sim/module-commands.log)\n"
    "      --wire-log FILE     log of every frame and noise burst sent\n"
    "      --write-log FILE    log of every write to the line, with the monotonic clock\n"
    "                          taken just before it\n"
    "      --replay FILE       the patient breathes this curve file, recorded by the\n"
    "                          console, looping\n"
    "  -h, --help              display this help and exit\n"
    "  -V, --version           output version information and exit\n"
    "\n"
    "See zelmoor-sim(1) for the script's commands.\n";

}  // namespace

int main(int argc, char** argv) {
    QCommandLineParser parser;
    const QCommandLineOption help_option(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version_option(
        QStringList{QStringLiteral("V"), QStringLiteral("version")});
    parser.addOptions({help_option, version_option});
    const QCommandLineOption headless_option(
        QStringLiteral("headless"), QStringLiteral("No window; controls come from the script."));
    const QCommandLineOption script_option(
        QStringLiteral("script"), QStringLiteral("Script of controls; - reads standard input."),
        QStringLiteral("file"));
    const QCommandLineOption app_data_option(
        QStringLiteral("app-data"),
        QStringLiteral("The console's application data folder (default ~/.local/share/zelmoor)."),
        QStringLiteral("folder"), QDir::homePath() + QStringLiteral("/.local/share/zelmoor"));
    const QCommandLineOption port_option(QStringLiteral("port-name"),
                                         QStringLiteral("Name of the link in <app-data>/ports/."),
                                         QStringLiteral("name"), QStringLiteral("sim0"));
    const QCommandLineOption seed_option(
        QStringLiteral("seed"), QStringLiteral("Seed of the breathing and of the line faults."),
        QStringLiteral("n"), QStringLiteral("1"));
    const QCommandLineOption command_log_option(
        QStringLiteral("command-log"),
        QStringLiteral("Log of received commands (default <app-data>/sim/module-commands.log)."),
        QStringLiteral("file"));
    const QCommandLineOption wire_log_option(
        QStringLiteral("wire-log"), QStringLiteral("Log of every frame and noise burst sent."),
        QStringLiteral("file"));
    const QCommandLineOption write_log_option(
        QStringLiteral("write-log"),
        QStringLiteral("Log of every write to the line with the monotonic clock taken just before "
                       "it, for timing."),
        QStringLiteral("file"));
    const QCommandLineOption replay_option(
        QStringLiteral("replay"),
        QStringLiteral("The patient breathes this curve file, recorded by the console, looping."),
        QStringLiteral("file"));
    parser.addOptions({headless_option, script_option, app_data_option, port_option, seed_option,
                       command_log_option, wire_log_option, write_log_option, replay_option});
    // Read before any window system is needed, so that --help works without a display.
    QStringList args;
    for (int k = 0; k < argc; ++k) args.append(QString::fromLocal8Bit(argv[k]));
    const bool parsed = parser.parse(args);
    if (parsed && parser.isSet(help_option)) {
        std::printf("%s%s", usage_line, help_text);
        return 0;
    }
    if (parsed && parser.isSet(version_option)) {
        std::printf("zelmoor-sim %s\n", ZEL_PACKAGE_VERSION);
        return 0;
    }
    if (!parsed || !parser.positionalArguments().isEmpty()) {
        const QString error =
            parsed ? QStringLiteral("extra operand '%1'").arg(parser.positionalArguments().front())
                   : parser.errorText();
        std::fprintf(stderr, "zelmoor-sim: %s\n%sTry 'zelmoor-sim --help' for more information.\n",
                     qPrintable(error), usage_line);
        return 2;
    }
    const bool headless = parser.isSet(headless_option);
    std::unique_ptr<QCoreApplication> app = headless
                                                ? std::make_unique<QCoreApplication>(argc, argv)
                                                : std::make_unique<QApplication>(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("zelmoor-sim"));

    zelsim::HostOptions options;
    options.app_data = QDir(parser.value(app_data_option)).absolutePath();
    options.port_name = parser.value(port_option);
    options.seed = parser.value(seed_option).toUInt();
    options.command_log = parser.value(command_log_option);
    options.wire_log = parser.value(wire_log_option);
    options.write_log = parser.value(write_log_option);

    zelsim::SimHost host(options);
    QObject::connect(&host, &zelsim::SimHost::quit_requested, app.get(), &QCoreApplication::quit,
                     Qt::QueuedConnection);
    quit_on_signals(*app);
    QObject::connect(&host, &zelsim::SimHost::message, app.get(), [](const QString& text) { fail(text); });
    if (const QString error = host.start(); !error.isEmpty()) {
        fail(error);
        return 1;
    }
    std::printf("zelmoor-sim: %s linked as %s\n", qPrintable(host.device()),
                qPrintable(host.link_path()));
    std::fflush(stdout);

    std::unique_ptr<zelsim::SimWindow> window;
    if (!headless) {
        window = std::make_unique<zelsim::SimWindow>(host);
        window->show();
    }
    if (parser.isSet(replay_option))
        host.run_line(QStringLiteral("replay ") + parser.value(replay_option));
    if (!start_script(parser.value(script_option), host, *app)) return 2;
    const int code = app->exec();
    host.stop();
    return code;
}
