// The real serial adapter on a port file that exists but that the user may not open. Tests
// run as root here, and root opens any file; so the opening is done in a child process that
// has given up root for the unprivileged "nobody" first.
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <functional>

#include "app/zel_error.h"
#include "fakes/files.h"
#include "platform/port_refusal.h"
#include "platform/qt_serial_port.h"

namespace zel::test {
namespace {

constexpr uid_t nobody = 65534;

// Runs `work` in a child without root's rights; returns what it answered.
QString as_nobody(const std::function<QByteArray()>& work) {
    int pipe_ends[2];
    if (::pipe(pipe_ends) != 0) return QStringLiteral("pipe");
    if (::fork() == 0) {
        if (::geteuid() == 0 &&
            (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0))
            ::_exit(3);
        const QByteArray answer = work();
        [[maybe_unused]] const ssize_t written =
            ::write(pipe_ends[1], answer.constData(), static_cast<size_t>(answer.size()));
        ::_exit(0);
    }
    ::close(pipe_ends[1]);
    QFile answer;
    answer.open(pipe_ends[0], QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    const QString text = QString::fromUtf8(answer.readAll());
    ::wait(nullptr);
    return text;
}

// Opens port 1 of `app_data`: the failure's number, or "0" when the port opened.
QByteArray open_port(const QString& app_data) {
    try {
        QtSerialPort port(app_data);
        port.set_CommPort(1);
        port.set_PortOpen(true);
    } catch (const ZelError& e) {
        return QByteArray::number(e.number);
    }
    return "0";
}

QByteArray described(const PortRefusal& r) {
    return QStringLiteral("%1 %2 %3 %4 %5 %6")
        .arg(static_cast<int>(r.kind))
        .arg(r.group, r.owner, QFileInfo(r.lock_file).fileName(), r.program)
        .arg(r.pid)
        .toUtf8();
}

struct Terminal {
    Terminal() {
        master = ::posix_openpt(O_RDWR | O_NOCTTY);
        if (master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0)
            path = QString::fromLocal8Bit(::ptsname(master));
        // A lock left on this terminal's number by an earlier run whose console was killed
        // would refuse the unprivileged opening below: such a lock is no part of these tests.
        const QString name = QStringLiteral("/LCK..") + path.mid(5).replace('/', '_');
        for (const QString& folder : serial_lock_folders()) QFile::remove(folder + name);
    }
    ~Terminal() { ::close(master); }
    void mode(mode_t m) const { ::chmod(QFile::encodeName(path).constData(), m); }
    int master = -1;
    QString path;
};

TEST(PortPermission, a_port_the_user_may_not_open_says_who_may_and_what_to_do) {
    ASSERT_EQ(::geteuid(), 0u) << "the refusals are made as nobody by a child of root";
    QTemporaryDir app_data, locks;
    // The child, as nobody, must reach the link in ports/ and the lock folder, open to all
    // and sticky as the system's.
    ASSERT_EQ(::chmod(QFile::encodeName(app_data.path()).constData(), 0705), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(locks.path()).constData(), 01777), 0);
    ASSERT_TRUE(QDir().mkpath(app_data.path() + QStringLiteral("/ports")));
    const Terminal terminal;
    ASSERT_FALSE(terminal.path.isEmpty());
    ASSERT_TRUE(QFile::link(terminal.path, app_data.path() + QStringLiteral("/ports/port")));
    struct stat info {};
    ASSERT_EQ(::stat(QFile::encodeName(terminal.path).constData(), &info), 0);
    const QString group = QString::fromLocal8Bit(::getgrgid(info.st_gid)->gr_name);
    const QString lock =
        locks.path() + QStringLiteral("/LCK..") + terminal.path.mid(5).replace('/', '_');
    const QString ended = QString::number(0x7ffffff0);  // no process has this number
    const QString live = QString::number(::getpid());

    using Kind = PortRefusal::Kind;
    const QString lock_name = QFileInfo(lock).fileName();
    struct Case {
        const char* what; mode_t mode; QString lock_pid; Kind kind;
        QString group, owner, lock, program, pid; const char* opening;
    };
    // clang-format off
    const Case cases[] = {
        {"the group may: join it", 0660, {}, Kind::join_group, group, {}, {}, {}, "0", "70"},
        {"only the owner may: an administrator", 0600, {}, Kind::ask_administrator, {}, "root", {}, {}, "0", "70"},
        {"a lock of an ended program", 0666, ended, Kind::stale_lock, {}, "root", lock_name, {}, ended, ""},
        {"a lock of a program that runs", 0666, live, Kind::held_by_program, {}, "root", lock_name, "test_link", live, ""},
        {"open to the user", 0666, {}, Kind::none, {}, {}, {}, {}, "0", "0"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        terminal.mode(c.mode);
        QFile::remove(lock);
        if (!c.lock_pid.isEmpty()) {
            QFile file(lock);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(QStringLiteral("%1\nzelmoor\nhost\n").arg(c.lock_pid).toLatin1());
        }
        const QString device = terminal.path;
        const QStringList folders{locks.path()};
        EXPECT_EQ(as_nobody([&] { return described(examine_port_refusal(device, folders)); }),
                  QStringLiteral("%1 %2 %3 %4 %5 %6")
                      .arg(static_cast<int>(c.kind))
                      .arg(c.group, c.owner, c.lock, c.program, c.pid));
        // Through the adapter, with the system's own lock folders.
        if (*c.opening) {
            EXPECT_EQ(as_nobody([&] { return open_port(app_data.path()); }), c.opening);
        }
    }
    // A lock of an ended program that the user may remove is no refusal: it is taken over.
    QFile::remove(lock);
    QFile own(lock);
    ASSERT_TRUE(own.open(QIODevice::WriteOnly));
    own.write(ended.toLatin1() + "\n");
    own.close();
    ASSERT_EQ(::chown(QFile::encodeName(lock).constData(), nobody, nobody), 0);
    const QString device = terminal.path;
    EXPECT_TRUE(as_nobody([&] {
                    return described(examine_port_refusal(device, {locks.path()}));
                }).startsWith(QStringLiteral("0 ")));
}

// What the console does with the adapter, on a pseudo-terminal: each misuse answers with its own
// error, and bytes pass both ways once the port is open.
TEST(SerialAdapter, answers_misuse_with_its_error_and_passes_bytes_both_ways) {
    QTemporaryDir app_data;
    ASSERT_TRUE(QDir().mkpath(app_data.path() + QStringLiteral("/ports")));
    const Terminal terminal;
    ASSERT_TRUE(QFile::link(terminal.path, app_data.path() + QStringLiteral("/ports/port")));
    QtSerialPort port(app_data.path());
    EXPECT_EQ(error_of([&] { port.Output("V"); }), err_port_not_open);
    EXPECT_EQ(std::pair(port.InBufferCount(), int(port.Input())), std::pair(0, 0));
    for (int number : {0, 21}) {
        port.set_CommPort(number);
        EXPECT_EQ(error_of([&] { port.set_PortOpen(true); }), err_invalid_port) << number;
    }
    port.set_CommPort(1);
    port.set_PortOpen(true);
    ASSERT_TRUE(port.PortOpen());
    EXPECT_EQ(port.device_path(), terminal.path.mid(5));  // without "/dev/"
    EXPECT_EQ(error_of([&] { port.set_CommPort(2); }), err_port_already_open);
    char sent[3] = {};
    EXPECT_TRUE(port.Output("XE") && ::read(terminal.master, sent, 2) == 2 &&
                QByteArray(sent) == "XE");
    ASSERT_EQ(::write(terminal.master, "\xa5\x06", 2), 2);
    EXPECT_TRUE(QTest::qWaitFor([&] { return port.InBufferCount() == 2; }, 2000));
    const int first = port.Input();
    EXPECT_EQ(std::pair(first, int(port.Input())), std::pair(0xa5, 0x06));
    port.set_PortOpen(false);
    EXPECT_FALSE(port.PortOpen());
}

}  // namespace
}  // namespace zel::test
