#include "platform/qt_serial_port.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSerialPortInfo>
#include <QTimer>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "app/zel_error.h"
#include "data/file_access.h"

namespace zel {

namespace {
// The machine's ports come from the device database, which takes tens of milliseconds to ask;
// the search asks once per port number, twenty times in one tick of 350 ms. Asked again only
// after a second, a port plugged in is still found on the next pass.
QStringList machine_port_paths() {
    static QStringList cached;
    static QElapsedTimer age;
    if (!age.isValid() || age.elapsed() > 1000) {
        cached.clear();
        for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts())
            cached.append(info.systemLocation());
        std::sort(cached.begin(), cached.end());
        age.start();
    }
    return cached;
}

}  // namespace

QStringList serial_port_paths(const QString& app_data_path) {
    QStringList paths;
    const QDir links(app_data_path + QStringLiteral("/ports"));
    for (const QString& name : links.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot,
                                               QDir::Name))
        paths.append(links.filePath(name));
    paths.append(machine_port_paths());
    while (paths.size() > 20) paths.removeLast();
    return paths;
}

QtSerialPort::QtSerialPort(QString app_data_path_) : app_data_path(std::move(app_data_path_)) {
    // A notification is only posted here; the handler runs from the event loop, so that a
    // modal dialog opened inside it goes on receiving the stream.
    connect(&port, &QSerialPort::readyRead, this, &QtSerialPort::post_notification);
    connect(&port, &QSerialPort::errorOccurred, this, &QtSerialPort::on_error);
}

QtSerialPort::~QtSerialPort() {
    if (port.isOpen()) port.close();
}

void QtSerialPort::set_CommPort(int number) {
    if (port.isOpen())
        throw ZelError(err_port_already_open, QStringLiteral("CommPort"),
                       QStringLiteral("Port already open"));
    port_number = number;
}

void QtSerialPort::set_PortOpen(bool open) {
    if (open == port.isOpen()) return;
    if (!open) {
        port.close();
        return;
    }
    const QStringList paths = serial_port_paths(app_data_path);
    if (port_number < 1 || port_number > paths.size())
        throw ZelError(err_invalid_port, QStringLiteral("PortOpen"),
                       QStringLiteral("Invalid port number"));
    // A link in ports/ names the device by its target; the lock file goes by the real name.
    const QFileInfo info(paths[port_number - 1]);
    const QString device = info.isSymLink() ? info.symLinkTarget() : info.absoluteFilePath();
    port.setPortName(device);
    port.setBaudRate(QSerialPort::Baud9600);
    port.setDataBits(QSerialPort::Data8);
    port.setParity(QSerialPort::NoParity);
    port.setStopBits(QSerialPort::OneStop);
    port.setFlowControl(QSerialPort::NoFlowControl);
    last_refusal = PortRefusal{};
    if (!port.open(QIODevice::ReadWrite)) {
        // By its full path: the port's name drops the "/dev/" of a device.
        last_refusal = examine_port_refusal(device);
        using Kind = PortRefusal::Kind;
        if (last_refusal.kind == Kind::none || last_refusal.kind == Kind::held_by_program)
            throw ZelError(err_port_already_open, QStringLiteral("PortOpen"), port.errorString());
        throw ZelError(err_permission_denied, QStringLiteral("PortOpen"),
                       QStringLiteral("Permission denied: %1").arg(device));
    }
    port.clear();
}

int QtSerialPort::InBufferCount() const {
    return port.isOpen() ? static_cast<int>(port.bytesAvailable()) : 0;
}

uint8_t QtSerialPort::Input() {
    char byte = 0;
    if (!port.isOpen() || !port.getChar(&byte)) return 0;
    return static_cast<uint8_t>(byte);
}

bool QtSerialPort::Output(const QByteArray& bytes) {
    if (!port.isOpen())
        throw ZelError(err_port_not_open, QStringLiteral("Output"),
                       QStringLiteral("Operation valid only when the port is open"));
    // Straight to the device, not through the port's buffer: the command has left, or the
    // write says why not, now rather than at some later flush. A line that can't take a few
    // bytes without waiting (EAGAIN) has stopped draining.
    const int error = write_all(static_cast<int>(port.handle()), bytes.constData(),
                                static_cast<size_t>(bytes.size()));
    if (error == 0) return true;
    std::fprintf(stderr, "zelmoor: %s: a command to the module did not leave: %s\n",
                 qPrintable(port.portName()), std::strerror(error));
    return false;
}

void QtSerialPort::post_notification() {
    if (notification_posted) return;
    notification_posted = true;
    QTimer::singleShot(0, this, &QtSerialPort::deliver_notification);
}

void QtSerialPort::deliver_notification() {
    notification_posted = false;
    if (!port.isOpen()) return;
    if (OnComm) OnComm();
    // One frame per notification: what still waits gets a notification of its own.
    if (port.isOpen() && port.bytesAvailable() > 0) post_notification();
}

void QtSerialPort::on_error(QSerialPort::SerialPortError error) {
    // When the other side goes away the driver reports read errors in a busy loop; closing
    // the port ends that, and the link's own time-outs find the loss.
    if (error == QSerialPort::NoError || error == QSerialPort::TimeoutError) return;
    if (port.isOpen()) port.close();
}

}  // namespace zel
