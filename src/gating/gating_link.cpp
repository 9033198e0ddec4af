// Opening and closing the link to the gating system for a treatment.
#include "app/form1.h"
#include "language/messages.h"

namespace zel {

void Form1::handle_missing_gating_library() {
    Gated_Treatment = false;
    reset_patient();
    platform.boxes.MsgBox(message_text(355), vbOKOnly, {});
}

void Form1::open_tarrow_link() {
    try {
        if (platform.tarrow.Open() == 0) {
            platform.tarrow.SetRelayEnablePermission(0);
            if (!Gated_Treatment) platform.tarrow.Close();
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
        platform.tarrow.Close();
        Gating_OverRide = false;
        Image_Gating_Ready.Visible = false;
        Image_Gating_Closed.Visible = false;
        Image_Gating_Fault.Visible = false;
    } catch (const ZelError& e) {
        if (e.number == err_file_not_found) handle_missing_gating_library();
    }
}

}  // namespace zel
