#pragma once
// State of the gated treatment.
#include <QString>
#include <cstdint>

#include "tarrow.h"

namespace zel {

struct GatingState {
    bool Gated_Treatment = false;
    bool Gating_OverRide = false;
    QString gating_start_mode;
    int16_t gating_start_attempts = 0;
    bool tarrow_Enable_error = false;
    QString gating_error_message;
    QString gating_dialog_message;
    bool tarrow_error_lock = false;
    // The last relay command was "close": the beam may be on.
    bool relay_close_commanded = false;
    // A poll has run since the last line of the curve file.
    bool tarrowNewData = false;
    // The status of the last poll.
    TarrowStatus tarrow_status{};
    QString tarrow_relay_firmware;
    QString tarrow_control_firmware;
    QString tarrow_DLL_firmware;
};

}  // namespace zel
