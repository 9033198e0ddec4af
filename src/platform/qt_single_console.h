#pragma once
// One console per user and machine. Two consoles would share the module's port, the patients'
// files, the settings and the gating library; a second start (a double click too many) finds
// the running console instead, asks it to bring its main window to the front, and ends.
//   The running console holds a lock file in the settings folder (taken over when the console
//   that left it was killed) and listens on a local socket named for the user and that folder.
#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <functional>
#include <memory>

namespace zel {

class QtSingleConsole final : public QObject {
  public:
    explicit QtSingleConsole(const QString& settings_folder);
    ~QtSingleConsole() override;

    // True when this process is now the console: the lock is its own.
    bool take();
    // The process number of the console that holds the lock, 0 when unknown.
    qint64 running_console() const;
    // Asks the running console to come to the front; true when it answered.
    bool raise_running_console(int timeout_ms = 3000);
    // Called in the running console when a second start asks for it.
    std::function<void()> on_raise_request;

  private:
    QString server_name() const;
    QLockFile lock;
    QString folder;
    std::unique_ptr<QLocalServer> server;
};

}  // namespace zel
