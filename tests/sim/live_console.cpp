#include "sim/live_console.h"

#include <time.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <cstdio>

#include "fakes/files.h"

namespace zel::test {

double monotonic_seconds() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + t.tv_nsec / 1e9;
}

void handle_events() {
    QTimer wake;  // gone before it could fire twice
    wake.start(5);
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

void keep_event_loop_running(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

bool install_gating_library(const QString& app_data, const QString& library, const QByteArray& control) {
    for (const char* folder : {"/lib", "/sim"}) QDir().mkpath(app_data + QLatin1String(folder));
    QFile file(app_data + QStringLiteral("/sim/tarrow-control.txt"));
    if (!control.isEmpty() && !(file.open(QIODevice::WriteOnly) && file.write(control) == control.size()))
        return false;
    return QFile::copy(library, app_data + QStringLiteral("/lib/libtarrow.so"));
}

std::vector<std::pair<double, QString>> gating_calls(const QString& app_data) {
    std::vector<std::pair<double, QString>> calls;
    for (const QByteArray& line :
         contents(app_data + QStringLiteral("/sim/tarrow-calls.log")).split('\n')) {
        const QList<QByteArray> w = line.split(' ');
        if (w.size() >= 3) calls.emplace_back(w[0].toDouble(), QString::fromLatin1(w[2]));
    }
    return calls;
}

std::map<std::string, QByteArray> log_files(const QString& app_data) {
    std::map<std::string, QByteArray> files;
    const QDir folder(app_data + QStringLiteral("/LOG"));
    for (const QString& name : folder.entryList(QDir::Files))
        files[name.toStdString()] = contents(folder.filePath(name));
    return files;
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
        std::fprintf(stderr, "link not up: port %d, %d notifications, zel_detect %d; module heard: %s\n",
                     form.ComPort, notifications, form.zel_detect, qPrintable(sim.commands().join(' ')));
    return up;
}

}  // namespace zel::test
