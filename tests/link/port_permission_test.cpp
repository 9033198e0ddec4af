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
#include <QTemporaryDir>

#include "app/zel_error.h"
#include "platform/qt_serial_port.h"

namespace zel::test {
namespace {

// Opens port 1 of `app_data` in a child without root's rights; returns the failure's text
// behind its number, or "0" when the port opened.
QString open_as_nobody(const QString& app_data) {
    int pipe_ends[2];
    if (::pipe(pipe_ends) != 0) return QStringLiteral("pipe");
    if (::fork() == 0) {
        constexpr uid_t nobody = 65534;
        if (::geteuid() == 0 &&
            (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0))
            ::_exit(3);
        QByteArray answer = "0";
        try {
            QtSerialPort port(app_data);
            port.set_CommPort(1);
            port.set_PortOpen(true);
        } catch (const ZelError& e) {
            answer = QByteArray::number(e.number) + ' ' + e.description.toUtf8();
        }
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

TEST(PortPermission, a_port_file_the_user_may_not_open_names_the_device_and_its_group) {
    QTemporaryDir app_data;
    // The child, as nobody, must reach the link in ports/.
    ASSERT_EQ(::chmod(QFile::encodeName(app_data.path()).constData(), 0705), 0);
    ASSERT_TRUE(QDir().mkpath(app_data.path() + QStringLiteral("/ports")));
    // A pseudo-terminal, as a module's line; as for a real adapter, owner and group may read
    // and write, others not (not root: the owner's own rights are taken away instead).
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0);
    const QString terminal = QString::fromLocal8Bit(::ptsname(master));
    const QByteArray terminal_path = QFile::encodeName(terminal);
    ASSERT_EQ(::chmod(terminal_path.constData(), ::geteuid() == 0 ? 0660 : 0000), 0);
    ASSERT_TRUE(QFile::link(terminal, app_data.path() + QStringLiteral("/ports/port")));
    // The terminal's group is the system's ("tty", or "root" where /dev/pts is mounted
    // without one).
    struct stat terminal_info {};
    ASSERT_EQ(::stat(terminal_path.constData(), &terminal_info), 0);
    const struct group* terminal_group = ::getgrgid(terminal_info.st_gid);
    ASSERT_NE(terminal_group, nullptr);

    const QString refused = open_as_nobody(app_data.path());
    SCOPED_TRACE(refused.toStdString());
    EXPECT_TRUE(refused.startsWith(QString::number(err_permission_denied) + ' '));
    EXPECT_TRUE(refused.contains(QStringLiteral("The serial port %1 exists").arg(terminal)));
    EXPECT_TRUE(refused.contains(QStringLiteral("add the user to the group that owns it (%1)")
                                     .arg(QString::fromLocal8Bit(terminal_group->gr_name))));

    // Given the rights, the same port opens.
    ASSERT_EQ(::chmod(terminal_path.constData(), 0666), 0);
    EXPECT_EQ(open_as_nobody(app_data.path()), QStringLiteral("0"));
    ::close(master);
}

}  // namespace
}  // namespace zel::test
