#pragma once
// The serial line to the control module, with the operations the link needs of it.
#include <QByteArray>
#include <cstdint>
#include <functional>

#include "platform/port_refusal.h"

namespace zel {

class SerialPort {
public:
    virtual ~SerialPort() = default;

    // Port numbers count from 1 (see port_directory.h). Selecting does not open.
    virtual void set_CommPort(int number) = 0;
    virtual int CommPort() const = 0;
    // Opening fails with ZelError: err_invalid_port for a number with no port behind it,
    // err_port_already_open for a port that another program holds, err_permission_denied for
    // one this user may not open (refusal() tells why).
    virtual void set_PortOpen(bool open) = 0;
    virtual bool PortOpen() const = 0;
    virtual int InBufferCount() const = 0;
    // Takes the next waiting byte; 0 when nothing waits.
    virtual uint8_t Input() = 0;
    // False when the bytes did not all reach the line (the driver refused them or took only
    // part): the module can not be counted on to have them. A closed port fails with 8018.
    virtual bool Output(const QByteArray& bytes) = 0;
    // Why the last opening failed, where the device's and the lock's files tell; kind none
    // when they don't or the opening went through.
    virtual PortRefusal refusal() const { return {}; }

    // Called from the event loop whenever bytes have come in; never from inside the driver's
    // own signal. While bytes still wait after it returns, one more call follows.
    std::function<void()> OnComm;
};

}  // namespace zel
