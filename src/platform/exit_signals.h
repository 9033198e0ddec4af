#pragma once
// The system's requests to end the program, brought into the event loop: SIGTERM (a shutdown,
// a logout, `systemctl stop`), SIGHUP (the session closed) and SIGINT (an interrupt). The
// handler itself only writes the signal's number into a pipe; a notifier reads it there, so
// that the program's own end runs as an ordinary event, between handlers or under a dialog.
#include <QObject>
#include <functional>

class QSocketNotifier;

namespace zel {

class ExitSignals final : public QObject {
  public:
    // One at a time: the signals' handlers are the process's own.
    explicit ExitSignals(std::function<void(int signal_number)> on_signal);
    ~ExitSignals() override;
    ExitSignals(const ExitSignals&) = delete;
    ExitSignals& operator=(const ExitSignals&) = delete;

    // The signals caught, in the order they are installed.
    static const int caught[3];

  private:
    void read_pipe();
    std::function<void(int)> on_signal;
    QSocketNotifier* notifier = nullptr;
};

}  // namespace zel
