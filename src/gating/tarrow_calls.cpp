// The half-second supervision of the gating system in a gated treatment: the poll, the
// analysis of what it read, and the calls into the gating library made by the cycle.
#include "app/form1.h"
#include "gating/tarrow_texts.h"
#include "language/messages.h"

namespace zel {

void Form1::_Tarrow_SetRelayState(uint8_t close_relay) {
    // Behind a failure report the beam may only be stopped, never started.
    if (stopped_by_failure && close_relay != 0) return;
    // Marked before the call: a close that fails half-way may still have closed the relay.
    if (close_relay != 0) relay_close_commanded = true;
    platform.tarrow.SetRelayState(close_relay);
    if (close_relay == 0) relay_close_commanded = false;
}

void Form1::show_gating_lamp(Control& lamp) {
    for (Control* each : {&Image_Gating_Ready, &Image_Gating_Closed, &Image_Gating_Fault})
        each->Visible = each == &lamp;
}

void Form1::poll_tarrow_status() {
    try {
        tarrowNewData = true;
        if (platform.tarrow.Connected() != 0) {
            gating_connection_lost();
            return;
        }
        if (gating_start_mode.isEmpty()) gating_start_mode = message_text(268);
        TarrowFirmware firmware{};
        platform.tarrow.GetFirmwareVersions(firmware);
        tarrow_relay_firmware = fixed_text(firmware.relay_firmware, sizeof firmware.relay_firmware);
        tarrow_control_firmware =
            fixed_text(firmware.control_firmware, sizeof firmware.control_firmware);
        TarrowDllVersion version{};
        platform.tarrow.GetDLLVersion(version);
        tarrow_DLL_firmware = fixed_text(version.dll_version, sizeof version.dll_version);
        platform.tarrow.GetStatus(tarrow_status);
        analyse_tarrow_status();
    } catch (const ZelError& e) {
        // Without the library there is no gated operation.
        if (e.number == err_file_not_found) handle_missing_gating_library();
        // Other failures of a poll are ignored; the next poll tries again.
    }
}

void Form1::offer_way_back_to_automated() {
    if (b_state == 1 && !tarrow_error_lock) {
        gating_dialog_message = message_text(295);
        tarrow_error_lock = true;
        show_Form_OverRide_Disable();
    }
}

void Form1::withdraw_override_question() {
    if (tarrow_error_lock) {
        tarrow_error_lock = false;
        platform.windows.unload(Window::Form_OverRide_Enable);
    }
}

void Form1::analyse_tarrow_status() {
    const char relay = tarrow_status.relay_state;
    const char link = tarrow_status.relay_link;
    const char enable = tarrow_status.enable_state;
    const bool bad = relay == 'X' || relay == 'Y' || link != '^';

    if (!bad && enable == 'E') {
        show_gating_lamp(relay == 'C' || relay == 'c' ? Image_Gating_Closed : Image_Gating_Ready);
        if (tarrow_status.permission_to_disable != 'L')
            platform.tarrow.SetRelayEnablePermission(0);
        if (tarrow_Enable_error) {
            Label2.Caption = message_text(261);
            tarrow_Enable_error = false;
        }
        if (Gating_OverRide) {
            offer_way_back_to_automated();
            return;
        }
        if (tarrow_status.fast_gating == '!') {
            if (!tarrow_error_lock) {
                // Stays locked until a clean poll: the violation is cleared by the OK button.
                tarrow_error_lock = true;
                show_Form_FastGatingClear();
                write_tarrow_log();
            }
            return;
        }
        // What the open question reported has gone away by itself.
        withdraw_override_question();
        return;
    }

    if (!bad) {
        tarrow_Enable_error = true;
        if (Gating_OverRide)
            offer_way_back_to_automated();
        else
            withdraw_override_question();
        if (enable == 'D') {
            gating_error_message = message_text(274);
            Label2.Caption = gating_error_message;
        } else if (enable == 'F') {
            gating_error_message = message_text(278);
            Label2.Caption = gating_error_message;
        }
        return;
    }

    if (!Gating_OverRide && b_state >= 2 && b_state <= 4) {
        send_command("X");
        abort_by = QStringLiteral("tarrow");
    }
    show_gating_lamp(Image_Gating_Fault);
    if (relay == 'X')
        gating_dialog_message = message_text(276);
    else if (relay == 'Y')
        gating_dialog_message = message_text(277);
    else if (relay == 'U')
        gating_dialog_message = message_text(273);
    if (link == '_') gating_dialog_message = message_text(272);
    if (!Gating_OverRide && !tarrow_error_lock) {
        tarrow_error_lock = true;
        show_Form_OverRide_Enable();
    }
}

void Form1::gating_connection_lost() {
    // Two silent retries, half a second apart, before the operator is asked.
    if (gating_start_attempts < 2) {
        gating_start_attempts = add_i16(gating_start_attempts, 1, "gating_start_attempts");
        release_gating_library();
        platform.tarrow.Open();
        return;
    }
    if (!Gating_OverRide && b_state >= 2 && b_state <= 4) {
        send_command("X");
        abort_by = QStringLiteral("tarrow");
    }
    tarrow_Enable_error = false;
    show_gating_lamp(Image_Gating_Fault);
    if (!Gating_OverRide) {
        gating_dialog_message = message_text(271);
        if (!tarrow_error_lock) {
            tarrow_error_lock = true;
            show_Form_OverRide_Enable();
        }
    }
    // The system is tried again at every poll.
    release_gating_library();
    platform.tarrow.Open();
}

void Form1::show_Form_OverRide_Enable() {
    const int pressed = platform.windows.show_message(
        Window::Form_OverRide_Enable, message_text(147),
        {gating_dialog_message, message_text(275)}, {message_text(268), message_text(269)});
    if (pressed == 0) {
        // Automated goes on: the next poll finds whether the problem is still there.
        Gating_OverRide = false;
        gating_label.Caption = message_text(268);
        tarrow_error_lock = false;
    } else if (pressed == 1) {
        gating_label.Caption = message_text(269);
        Gating_OverRide = true;
        tarrow_error_lock = false;
        if (form12_open && form12) form12->Check_overide.Value = 1;
        gating_start_mode = message_text(316);
    }
}

void Form1::show_Form_OverRide_Disable() {
    const int pressed = platform.windows.show_message(Window::Form_OverRide_Disable,
                                                      message_text(108), {gating_dialog_message},
                                                      {message_text(293)});
    if (pressed == 0) {
        Gating_OverRide = false;
        if (form12_open && form12) form12->Check_overide.Value = 0;
        if (!pause_cue_visible) gating_label.Caption = message_text(268);
        tarrow_error_lock = false;
    }
}

void Form1::show_Form_FastGatingClear() {
    if (platform.windows.show_message(Window::Form_FastGatingClear, message_text(147),
                                      {message_text(279)}, {message_text(293)}) == 0)
        platform.tarrow.ClearTimingViolation();
}

}  // namespace zel
