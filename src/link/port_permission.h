#pragma once
// A serial port that exists but that the search can't open for a reason the operator or an
// administrator can put right: on a new installation the module's adapter belongs to a group
// the user is not yet in, or to its owner alone; a lock left by a program that was killed;
// another program that holds the port. Without a word the search would run for ever.
#include <QString>

#include "platform/port_refusal.h"

namespace zel {

// What the operator is told, once for each such port; empty for kind none.
QString port_refusal_text(const PortRefusal& refusal);

}  // namespace zel
