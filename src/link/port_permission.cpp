#include "link/port_permission.h"

#include "language/messages.h"

namespace zel {

QString port_refusal_text(const PortRefusal& r) {
    switch (r.kind) {
        case PortRefusal::Kind::none:
            return {};
        case PortRefusal::Kind::join_group:
            return message_text(357).arg(r.device, r.group);
        case PortRefusal::Kind::ask_administrator:
            return message_text(358).arg(r.device, r.owner);
        case PortRefusal::Kind::stale_lock:
            return message_text(359).arg(r.device, r.lock_file, QString::number(r.pid), r.owner);
        case PortRefusal::Kind::held_by_program:
            return message_text(360).arg(r.device, r.program, QString::number(r.pid));
    }
    return {};
}

}  // namespace zel
