#pragma once
// The gating system behind the library: a relay that follows its commands over a short
// transition, an enable state and a permission lock, and the faults a trainer sets.
#include <cstdint>

#include "gating_control.h"
#include "tarrow.h"

namespace zelsim {

// How long the relay takes to move.
constexpr double relay_transition_seconds = 0.06;

class GatingSystem {
  public:
    // The first control seen sets the count of violations; only later rises latch one.
    void apply(const GatingControl& control);

    int16_t open();
    void close() { is_open = false; }
    int16_t connected() const { return is_open && control.connected ? 0 : 1; }

    // Ignored (result 1) unless connected with the relay link up.
    int16_t set_relay(bool close_relay, double now);
    void set_permission(bool unlock) { unlocked = unlock; }
    void clear_violation() { violation = false; }

    TarrowStatus status(double now) const;
    bool relay_commanded_closed() const { return commanded_closed; }

  private:
    GatingControl control;
    bool applied = false;
    bool is_open = false;
    bool commanded_closed = false;
    double transition_end = -1.0;
    bool unlocked = true;
    bool violation = false;
};

void fill_firmware(TarrowFirmware& firmware);
void fill_dll_version(TarrowDllVersion& version);

}  // namespace zelsim
