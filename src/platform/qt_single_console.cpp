#include "platform/qt_single_console.h"

#include <unistd.h>

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>

namespace zel {

namespace {
const QByteArray raise_request = QByteArrayLiteral("raise\n");
const QByteArray raised_answer = QByteArrayLiteral("raised\n");
}  // namespace

QtSingleConsole::QtSingleConsole(const QString& settings_folder)
    : lock(settings_folder + QStringLiteral("/console.lock")),
      folder(QFileInfo(settings_folder).absoluteFilePath()) {
    // A lock is stale only when the process that took it is gone, however old it is.
    lock.setStaleLockTime(0);
}

QtSingleConsole::~QtSingleConsole() {
    if (server) server->close();
}

// One name for each settings folder, as the lock: consoles run with other home folders (a
// service account, a test) are other consoles.
QString QtSingleConsole::server_name() const {
    const QByteArray digest =
        QCryptographicHash::hash(QFile::encodeName(folder), QCryptographicHash::Sha256).toHex();
    return QStringLiteral("zelmoor-console-%1-%2")
        .arg(::getuid())
        .arg(QString::fromLatin1(digest.left(16)));
}

bool QtSingleConsole::take() {
    if (!lock.tryLock(0)) return false;
    server = std::make_unique<QLocalServer>();
    server->setSocketOptions(QLocalServer::UserAccessOption);
    // A socket file left by a killed console would keep the name taken.
    QLocalServer::removeServer(server_name());
    server->listen(server_name());
    connect(server.get(), &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* peer = server->nextPendingConnection()) {
            connect(peer, &QLocalSocket::disconnected, peer, &QObject::deleteLater);
            connect(peer, &QLocalSocket::readyRead, this, [this, peer] {
                if (!peer->readAll().contains(raise_request)) return;
                if (on_raise_request) on_raise_request();
                peer->write(raised_answer);
                peer->flush();
            });
        }
    });
    return true;
}

qint64 QtSingleConsole::running_console() const {
    qint64 pid = 0;
    QString host, application;
    return lock.getLockInfo(&pid, &host, &application) ? pid : 0;
}

bool QtSingleConsole::raise_running_console(int timeout_ms) {
    QLocalSocket socket;
    socket.connectToServer(server_name());
    if (!socket.waitForConnected(timeout_ms)) return false;
    socket.write(raise_request);
    if (!socket.waitForBytesWritten(timeout_ms)) return false;
    QByteArray answer;
    while (!answer.contains(raised_answer) && socket.waitForReadyRead(timeout_ms))
        answer += socket.readAll();
    return answer.contains(raised_answer);
}

}  // namespace zel
