#pragma once
// State of the gated treatment as the frame path reads it.
#include <cstdint>

namespace zel {

struct GatingState {
    bool Gated_Treatment = false;
    bool Gating_OverRide = false;
    // A fresh status from the gating library waits to be written to the curve file.
    bool tarrowNewData = false;
    // Enable and relay bytes of the latest status.
    char tarrow_enable_state = 0;
    char tarrow_relay_state = 0;
};

}  // namespace zel
