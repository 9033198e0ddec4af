#pragma once
// Runs the simulated module on a pseudo-terminal in real time: the module's clock, the
// console's commands, the script, the logs and the control file of the gating library.
#include <QElapsedTimer>
#include <QFile>
#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>
#include <memory>

#include "pty_port.h"
#include "script.h"

namespace zelsim {

struct HostOptions {
    QString app_data;            // the console's application data folder
    QString port_name = "sim0";  // the link's name in <app data>/ports/
    uint32_t seed = 1;
    QString command_log;  // default <app data>/sim/module-commands.log
    QString wire_log;     // every frame and noise burst sent; none by default
    // Every write to the line: the machine's monotonic clock in seconds when the write
    // returned, then the bytes. Lets a measurement pair a frame with what the console did.
    QString write_log;
};

class SimHost final : public QObject {
    Q_OBJECT
  public:
    explicit SimHost(HostOptions options, QObject* parent = nullptr);
    ~SimHost() override;

    // Gives an error text, or "" once the port is linked and the module runs.
    QString start();
    void stop();

    // One line of the script language; gives its error, or "".
    QString run_line(const QString& line);

    Simulator& simulator() { return sim; }
    double now() const { return clock.nsecsElapsed() / 1e9; }
    QString device() const { return QString::fromStdString(port.device()); }
    QString link_path() const;
    const HostOptions& options() const { return opts; }

  signals:
    void command_received(const QString& text);
    void quit_requested();
    // Something the operator should read, such as a curve file that can't be replayed.
    void message(const QString& text);

  private:
    void tick();
    void pass_on_messages();
    void read_console();
    void write_gating_control();
    void log_line(QFile& file, const QString& text);

    HostOptions opts;
    Simulator sim;
    ScriptRunner runner;
    PtyPort port;
    QElapsedTimer clock;
    QTimer ticker;
    std::unique_ptr<QSocketNotifier> readable;
    QFile command_log;
    QFile wire_log;
    QFile write_log;
    GatingControl written_gating;
    bool gating_written = false;
};

// The text of a received command for logs: time, letter, parameter bytes in decimal.
QString command_log_line(const Command& command);

}  // namespace zelsim
