#include "sim/sim_process.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>

#include "fakes/files.h"

namespace zel::test {

SimProcess::SimProcess(QString app_data_) : app_data(std::move(app_data_)) {}

SimProcess::~SimProcess() { stop(); }

bool SimProcess::start(const QByteArray& script, const QStringList& extra_arguments) {
    const QString script_path = app_data + QStringLiteral("/sim-script.txt");
    QFile file(script_path);
    if (!file.open(QIODevice::WriteOnly) || file.write(script) != script.size()) return false;
    file.close();
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const QStringList arguments{QStringLiteral("--headless"), QStringLiteral("--app-data"), app_data,
                                QStringLiteral("--script"), script_path,
                                QStringLiteral("--wire-log"), wire_log()};
    process.start(QStringLiteral(ZELMOOR_SIM_PATH), arguments + extra_arguments);
    if (!process.waitForStarted()) return false;
    const QString link = app_data + QStringLiteral("/ports/sim0");
    for (int k = 0; k < 200 && !QFileInfo(link).isSymLink(); ++k) QThread::msleep(20);
    return QFileInfo(link).isSymLink();
}

void SimProcess::stop() {
    if (process.state() == QProcess::NotRunning) return;
    process.terminate();
    if (!process.waitForFinished(5000)) process.kill();
}

QStringList SimProcess::commands() const {
    QStringList letters;
    for (const QByteArray& line :
         contents(app_data + QStringLiteral("/sim/module-commands.log")).split('\n')) {
        const QList<QByteArray> words = line.simplified().split(' ');
        if (words.size() >= 2 && !line.startsWith('#')) letters.append(QString::fromLatin1(words[1]));
    }
    return letters;
}

QString SimProcess::wire_log() const { return app_data + QStringLiteral("/wire.log"); }

}  // namespace zel::test
