// The real serial adapter on port files that exist but that the user may not open. Tests run
// as root here, and root opens any file; so the opening is done in a child process that has
// given up root for the unprivileged "nobody" first.
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

constexpr uid_t nobody = 65534;

// Opens port 1 of `app_data` in a child without root's rights; returns the failure's number
// and text, or 0 when the port opened.
std::pair<int, QString> open_as_nobody(const QString& app_data) {
    int pipe_ends[2];
    if (::pipe(pipe_ends) != 0) return {-1, QStringLiteral("pipe")};
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(pipe_ends[0]);
        if (::geteuid() == 0 &&
            (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0))
            ::_exit(3);
        QByteArray answer = "0\n";
        try {
            QtSerialPort port(app_data);
            port.set_CommPort(1);
            port.set_PortOpen(true);
        } catch (const ZelError& e) {
            answer = QByteArray::number(e.number) + '\n' + e.description.toUtf8();
        }
        [[maybe_unused]] const ssize_t written =
            ::write(pipe_ends[1], answer.constData(), static_cast<size_t>(answer.size()));
        ::_exit(0);
    }
    ::close(pipe_ends[1]);
    QByteArray answer;
    char buffer[512];
    for (ssize_t n; (n = ::read(pipe_ends[0], buffer, sizeof buffer)) > 0;)
        answer.append(buffer, n);
    ::close(pipe_ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    const qsizetype end = answer.indexOf('\n');
    if (end < 0) return {-1, QStringLiteral("child ended with %1").arg(status)};
    return {answer.left(end).toInt(), QString::fromUtf8(answer.mid(end + 1))};
}

TEST(PortPermission, a_port_file_the_user_may_not_open_names_the_device_and_its_group) {
    QTemporaryDir app_data;
    // The child, as nobody, must reach the link in ports/.
    QFile::setPermissions(app_data.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                               QFileDevice::ExeOwner | QFileDevice::ReadOther |
                                               QFileDevice::ExeOther);
    ASSERT_TRUE(QDir().mkpath(app_data.path() + QStringLiteral("/ports")));

    // A pseudo-terminal, as a module's line, and a plain file given to the group of serial
    // adapters; as for a real adapter, owner and group may read and write, others not.
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master, 0);
    ASSERT_EQ(::grantpt(master), 0);
    ASSERT_EQ(::unlockpt(master), 0);
    const QString terminal = QString::fromLocal8Bit(::ptsname(master));
    const QString plain = app_data.path() + QStringLiteral("/ttyUSB9");
    QFile(plain).open(QIODevice::WriteOnly);
    const struct group* dialout = ::getgrnam("dialout");
    const gid_t plain_gid = dialout ? dialout->gr_gid : 20;
    ASSERT_EQ(::chown(QFile::encodeName(plain).constData(), 0, plain_gid), 0);

    // The terminal's group is the system's ("tty", or "root" where /dev/pts is mounted
    // without one).
    struct stat terminal_info {};
    ASSERT_EQ(::stat(QFile::encodeName(terminal).constData(), &terminal_info), 0);
    const struct group* terminal_group = ::getgrgid(terminal_info.st_gid);
    ASSERT_NE(terminal_group, nullptr);
    struct Case {
        QString device;
        QString group;
    };
    const Case cases[] = {
        {terminal, QString::fromLocal8Bit(terminal_group->gr_name)},
        {plain, dialout ? QStringLiteral("dialout") : QStringLiteral("20")},
    };
    for (const Case& c : cases) {
        // Not root: the owner's own rights are taken away instead.
        const mode_t mode = ::geteuid() == 0 ? 0660 : 0000;
        ASSERT_EQ(::chmod(QFile::encodeName(c.device).constData(), mode), 0);
        const QString link = app_data.path() + QStringLiteral("/ports/port");
        QFile::remove(link);
        ASSERT_TRUE(QFile::link(c.device, link));
        const auto [number, text] = open_as_nobody(app_data.path());
        EXPECT_EQ(number, err_permission_denied) << text.toStdString();
        EXPECT_TRUE(text.contains(QStringLiteral("The serial port %1 exists").arg(c.device)))
            << text.toStdString();
        EXPECT_TRUE(text.contains(
            QStringLiteral("add the user to the group that owns it (%1)").arg(c.group)))
            << text.toStdString();
    }

    // Given the rights, the same port opens.
    ASSERT_EQ(::chmod(QFile::encodeName(terminal).constData(), 0666), 0);
    QFile::remove(app_data.path() + QStringLiteral("/ports/port"));
    ASSERT_TRUE(QFile::link(terminal, app_data.path() + QStringLiteral("/ports/port")));
    EXPECT_EQ(open_as_nobody(app_data.path()).first, 0);
    ::close(master);
}

}  // namespace
}  // namespace zel::test
