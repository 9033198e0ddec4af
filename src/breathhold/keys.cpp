// The operator's spacebar, which works the whole cycle.
#include "app/form1.h"
#include "language/messages.h"

namespace zel {

void Form1::Form_KeyDown(int key_code, int /*shift*/) {
    if (key_code != 32) return;
    abort_message.clear();
    if (sw_state == 2) {
        // In the fault state the spacebar only clears a distress signal.
        if (distress_fault) distress_fault = false;
        return;
    }
    const bool port_open = platform.serial.PortOpen();
    switch (b_state) {
        case 1:
            // Behind a settings dialog the hold stays unarmed: its Save would change the
            // settings under the armed module.
            if (settings_dialogs_open > 0) return;
            if (!patient_defined) {
                Label2.Caption = message_text(131);
                return;
            }
            // The module would otherwise fire at once or never.
            if (volume_in_threshold_region()) {
                Label2.Caption = message_text(198);
                return;
            }
            if (!Gating_OverRide && Gated_Treatment && tarrow_Enable_error) {
                Label2.Caption = gating_error_message;
                return;
            }
            abort_by.clear();
            if (port_open) send_command(inhale ? "A" : "B");
            draw_threshold_box();
            Label2.Caption.clear();
            show_key_prompt();
            if (!Gated_Treatment || Gating_OverRide) stop_pause_cue();
            break;
        case 2:
        case 3:
            if (port_open) send_command("X");
            draw_chart();
            break;
        case 4:
            abort_by = QStringLiteral("user");
            if (port_open) send_command("X");
            if (!Gated_Treatment || Gating_OverRide) {
                start_pause_cue();
                pauseBeamTimer->set_Enabled(true);
            }
            draw_chart();
            break;
        default:
            break;
    }
}

}  // namespace zel
