#pragma once
// The gating system's status letters and version fields as the operator reads them.
#include <QString>
#include <cstddef>

namespace zel {

// "Disabled", "Enabled" or "Fault"; empty for any other letter.
QString enable_state_text(char state);
// The relay's state: open, opening, closed, closing, the two errors, unknown; empty otherwise.
QString relay_state_text(char state);
// A fixed-size text field of the library, up to its first zero.
QString fixed_text(const char* field, size_t size);

}  // namespace zel
