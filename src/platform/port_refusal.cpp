#include "platform/port_refusal.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstring>
#include <vector>

namespace zel {

namespace {

// The name of a group or a user by its number; the number itself when it has no name.
template <class Entry, class Id>
QString name_of(Id id, int (*lookup)(Id, Entry*, char*, size_t, Entry**), char* Entry::*name) {
    std::vector<char> buffer(16384);
    Entry entry{};
    Entry* found = nullptr;
    if (lookup(id, &entry, buffer.data(), buffer.size(), &found) == 0 && found)
        return QString::fromLocal8Bit(found->*name);
    return QString::number(id);
}

QString group_name(gid_t gid) { return name_of<struct group>(gid, ::getgrgid_r, &group::gr_name); }
QString user_name(uid_t uid) { return name_of<struct passwd>(uid, ::getpwuid_r, &passwd::pw_name); }

bool process_runs(qint64 pid) {
    return pid > 0 && (::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM);
}

QString program_of(qint64 pid) {
    QFile comm(QStringLiteral("/proc/%1/comm").arg(pid));
    if (!comm.open(QIODevice::ReadOnly)) return QStringLiteral("?");
    return QString::fromLocal8Bit(comm.readAll().trimmed());
}

// The lock file's process number: the first field, as text (ten columns, or a line of its
// own as Qt writes it) or, in the oldest form, four binary bytes.
qint64 lock_pid(const QByteArray& bytes) {
    bool ok = false;
    const qint64 pid = bytes.simplified().split(' ').value(0).toLongLong(&ok);
    if (ok) return pid;
    if (bytes.size() == 4) {
        int32_t binary = 0;
        std::memcpy(&binary, bytes.constData(), 4);
        return binary;
    }
    return 0;
}

}  // namespace

QStringList serial_lock_folders() {
    return {QStringLiteral("/var/lock"),
            QStringLiteral("/etc/locks"),
            QStringLiteral("/var/spool/locks"),
            QStringLiteral("/var/spool/uucp"),
            QStringLiteral("/tmp"),
            QStringLiteral("/var/tmp"),
            QStringLiteral("/var/lock/lockdev"),
            QStringLiteral("/run/lock")};
}

PortRefusal examine_port_refusal(const QString& device, const QStringList& lock_folders) {
    PortRefusal refusal;
    refusal.device = device;
    const QByteArray path = QFile::encodeName(device);
    struct stat info {};
    if (::stat(path.constData(), &info) != 0) return refusal;

    if (::faccessat(AT_FDCWD, path.constData(), R_OK | W_OK, AT_EACCESS) != 0 && errno == EACCES) {
        // Joining the group helps only where the group may read and write the device.
        if ((info.st_mode & (S_IRGRP | S_IWGRP)) == (S_IRGRP | S_IWGRP)) {
            refusal.kind = PortRefusal::Kind::join_group;
            refusal.group = group_name(info.st_gid);
        } else {
            refusal.kind = PortRefusal::Kind::ask_administrator;
            refusal.owner = user_name(info.st_uid);
        }
        return refusal;
    }

    // The lock goes by the device's name under /dev, with its slashes made underscores.
    QString name = device;
    if (name.startsWith(QStringLiteral("/dev/"))) name = name.mid(5);
    name.replace(QLatin1Char('/'), QLatin1Char('_'));
    for (const QString& folder : lock_folders) {
        const QString lock_path = folder + QStringLiteral("/LCK..") + name;
        QFile lock(lock_path);
        if (!lock.open(QIODevice::ReadOnly)) continue;
        const qint64 pid = lock_pid(lock.read(64));
        struct stat lock_info {};
        const bool known = ::stat(QFile::encodeName(lock_path).constData(), &lock_info) == 0;
        refusal.lock_file = lock_path;
        refusal.pid = pid;
        refusal.owner = known ? user_name(lock_info.st_uid) : QStringLiteral("?");
        if (process_runs(pid)) {
            if (pid == ::getpid()) return PortRefusal{.device = device};
            refusal.kind = PortRefusal::Kind::held_by_program;
            refusal.program = program_of(pid);
            return refusal;
        }
        // A lock of an ended program that this user may remove is taken over by the driver
        // itself; only one that stays in the way is named. In a folder open to all (sticky),
        // only the lock's owner, the folder's or root removes it.
        const QByteArray folder_path = QFile::encodeName(folder);
        struct stat folder_info {};
        const uid_t me = ::geteuid();
        const bool removable =
            ::faccessat(AT_FDCWD, folder_path.constData(), W_OK | X_OK, AT_EACCESS) == 0 &&
            ::stat(folder_path.constData(), &folder_info) == 0 &&
            (!(folder_info.st_mode & S_ISVTX) || me == 0 || lock_info.st_uid == me ||
             folder_info.st_uid == me);
        if (removable) return PortRefusal{.device = device};
        refusal.kind = PortRefusal::Kind::stale_lock;
        return refusal;
    }
    return PortRefusal{.device = device};
}

}  // namespace zel
