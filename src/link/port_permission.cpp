#include "link/port_permission.h"

namespace zel {

QString port_permission_text(const QString& device, const QString& group) {
    return QStringLiteral(
               "The serial port %1 exists, but this user may not open it, so the module can't "
               "be found on it. To use it, add the user to the group that owns it (%2) and "
               "log in again.")
        .arg(device, group);
}

}  // namespace zel
