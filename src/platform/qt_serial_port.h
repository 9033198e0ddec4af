#pragma once
// The serial line through QSerialPort at 9600 8N1, no flow control.
#include <QObject>
#include <QSerialPort>
#include <QStringList>

#include "platform/serial_port.h"

namespace zel {

// Port number k is the k-th entry of: the entries of <app data>/ports/ (links to serial
// devices or pseudo-terminals, by name), then the machine's serial ports (by device path);
// at most 20.
QStringList serial_port_paths(const QString& app_data_path);

class QtSerialPort final : public QObject, public SerialPort {
    Q_OBJECT
public:
    explicit QtSerialPort(QString app_data_path);
    ~QtSerialPort() override;

    void set_CommPort(int number) override;
    int CommPort() const override { return port_number; }
    void set_PortOpen(bool open) override;
    bool PortOpen() const override { return port.isOpen(); }
    int InBufferCount() const override;
    uint8_t Input() override;
    bool Output(const QByteArray& bytes) override;
    PortRefusal refusal() const override { return last_refusal; }

    QString device_path() const { return port.portName(); }

private:
    void post_notification();
    void deliver_notification();
    void on_error(QSerialPort::SerialPortError error);

    QString app_data_path;
    QSerialPort port;
    int port_number = 1;
    PortRefusal last_refusal;
    bool notification_posted = false;
};

}  // namespace zel
