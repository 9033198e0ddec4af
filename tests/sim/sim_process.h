#pragma once
// The simulated module as a child process on a real pseudo-terminal, for end-to-end tests.
//   start(script)    writes the script, starts the simulator headless, waits for its port link
//   commands()       the command log: every letter the console sent, with its time
#include <QProcess>
#include <QString>
#include <QStringList>

namespace zel::test {

class SimProcess {
public:
    explicit SimProcess(QString app_data);
    ~SimProcess();
    bool start(const QByteArray& script, const QStringList& extra_arguments = {});
    void stop();
    // The letters of the command log, in order ("V", "L", "E", ...).
    QStringList commands() const;
    QString wire_log() const;
    qint64 pid() const { return process.processId(); }

private:
    QString app_data;
    QProcess process;
};

}  // namespace zel::test
