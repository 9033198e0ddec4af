#pragma once
// The console's place in the machine's scheduler. The frame that ends a hold must reach the
// relay within a couple of milliseconds even when other programs keep every core busy.
#include <QString>

namespace zel {

// Asks for round-robin real-time scheduling at a low real-time priority, and failing that for
// the highest ordinary priority; says what was granted, in one line for the log.
QString raise_scheduling_priority();

}  // namespace zel
