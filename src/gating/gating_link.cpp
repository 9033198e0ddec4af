// Opening and closing the link to the gating system for a treatment.
#include "app/form1.h"
#include "language/messages.h"

namespace zel {

void Form1::handle_missing_gating_library() {
    // A library that lacks one function may still offer the relay's: a relay closed for the
    // hold is opened before the gated treatment is let go.
    if (relay_close_commanded) {
        try {
            _Tarrow_SetRelayState(0);
        } catch (const ZelError&) {
        }
    }
    Gated_Treatment = false;
    reset_patient();
    platform.boxes.MsgBox(message_text(355), vbOKOnly, {});
}

void Form1::open_tarrow_link() {
    try {
        if (platform.tarrow.Open() == 0) {
            platform.tarrow.SetRelayEnablePermission(0);
            if (!Gated_Treatment) release_gating_library();
        }
        gating_start_mode.clear();
        gating_start_attempts = 0;
    } catch (const ZelError& e) {
        if (e.number == err_file_not_found) handle_missing_gating_library();
    }
}

void Form1::close_tarrow_link() {
    try {
        platform.tarrow.SetRelayEnablePermission(1);
        release_gating_library();
        Gating_OverRide = false;
        Image_Gating_Ready.Visible = false;
        Image_Gating_Closed.Visible = false;
        Image_Gating_Fault.Visible = false;
    } catch (const ZelError& e) {
        if (e.number == err_file_not_found) handle_missing_gating_library();
    }
}

void Form1::release_gating_library() {
    if (relay_close_commanded) _Tarrow_SetRelayState(0);
    platform.tarrow.Close();
}

}  // namespace zel
