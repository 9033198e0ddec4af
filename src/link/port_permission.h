#pragma once
// A serial port that exists but that this user may not open: on a new installation the
// module's adapter belongs to a group the user is not yet in, and the search would run for
// ever without saying why.
#include <QString>

namespace zel {

// What the operator is told, once for each such port: the device, and the group to join.
QString port_permission_text(const QString& device, const QString& group);

}  // namespace zel
