// The breath-hold cycle: the patient's switch, the balloon state reported by the module,
// holds, the relay during a hold, the pause cue.
#include "app/form1.h"
#include "app/helpers.h"
#include "language/messages.h"

namespace zel {

namespace {
constexpr Rgb yellow{255, 255, 0};
constexpr Rgb countdown_grey{192, 192, 192};

bool is_multiple_of(double counter, long long n) {
    return static_cast<long long>(counter) % n == 0;
}
}  // namespace

void Form1::read_patient_switch() {
    const bool closed = packet[1] & 0x02;
    if (closed && !patient_switch) {
        // Two closings no more than a second apart are a distress signal.
        if ((total_counts - time_of_last_switch_toggle) * 0.02 <= 1.0)
            patient_switch_toggles = add_i16(patient_switch_toggles, 1, "patient_switch_toggles");
        else
            patient_switch_toggles = 1;
        if (patient_switch_toggles >= 2) {
            distress_fault = true;
            if (sw_state == 1) {
                enter_fault_mode(QString());
                sw_state = 2;
            }
            send_command("X");
            draw_chart();
        }
        time_of_last_switch_toggle = total_counts;
    }
    patient_switch = closed;
}

void Form1::process_balloon_state() {
    const uint8_t reported = packet[2];
    // A: the record buttons are locked for the hold; B: unlocked again.
    auto action_a = [this] {
        if (patient_defined && !pauseRecordDisabled) disable_record_buttons();
    };
    auto action_b = [this] {
        if (patient_defined && pauseRecordDisabled) restore_record_buttons();
        countdown2.BackColor = countdown_grey;
        if (sw_state == 1) enable_menus();
    };
    auto relay_refresh = [this] {
        if (!is_multiple_of(counts, 30) || !Gated_Treatment || Gating_OverRide) return;
        if (ZEL_CM_duration > 0.5) {
            if (!Recover_Comm_During_Gated_Treatment) _Tarrow_SetRelayState(1);
        } else {
            Recover_Comm_During_Gated_Treatment = false;
            _Tarrow_SetRelayState(0);
        }
    };
    auto pause_cue_at_hold_end = [this] {
        if (pause_cue_visible) {
            pauseBeamTimer->set_Enabled(true);
        } else if (!Gated_Treatment || Gating_OverRide) {
            start_pause_cue();
            pauseBeamTimer->set_Enabled(true);
        }
    };
    auto time_remaining_text = [this] {
        return message_text(346) +
               format_number(ZEL_CM_duration, "##0.0", platform.locale.decimal_separator()) +
               QStringLiteral(". ");
    };

    switch (reported) {
        case 1:
            action_b();
            if (b_state == 2 || b_state == 3) {
                b_state = 1;
                show_key_prompt();
                draw_chart();
            } else if (b_state == 4) {
                pause_cue_at_hold_end();
                b_state = 1;
                draw_chart();
                if (Gated_Treatment && !Gating_OverRide) {
                    _Tarrow_SetRelayState(0);
                    Recover_Comm_During_Gated_Treatment = false;
                }
                if (ZEL_CM_duration > 0.02) {
                    int reason = 0;
                    if (abort_by == QLatin1String("user")) reason = 348;
                    else if (abort_by == QLatin1String("tarrow")) reason = 350;
                    else if (abort_by.isEmpty()) reason = 347;
                    if (reason != 0)
                        abort_message = message_text(204) + QLatin1Char(' ') +
                                        message_text(reason) + QLatin1Char(' ') +
                                        time_remaining_text();
                    Label2.Caption = abort_message;
                } else {
                    show_key_prompt();
                }
            } else {
                b_state = 1;
            }
            break;
        case 2:
        case 3: {
            action_a();
            const bool from_standby = b_state == 1;
            b_state = reported;
            if (from_standby) show_key_prompt();
            disable_menus();
            break;
        }
        case 4:
            action_a();
            disable_menus();
            countdown2.BackColor = yellow;
            if (b_state != 4) {
                b_state = 4;
                breath_holds = add_i16(breath_holds, 1, "breath_holds");
                show_key_prompt();
                if (Gated_Treatment && !Gating_OverRide && !Recover_Comm_During_Gated_Treatment)
                    _Tarrow_SetRelayState(1);
            }
            relay_refresh();
            break;
        case 5:
            action_a();
            if (b_state == 4) {
                if (ZEL_CM_duration > 0.02) {
                    abort_message = message_text(204) + QLatin1Char(' ') + message_text(349) +
                                    QLatin1Char(' ') + time_remaining_text();
                    Label2.Caption = abort_message;
                }
                pause_cue_at_hold_end();
            }
            b_state = 5;
            break;
        default:
            break;  // not a balloon state: nothing changes
    }
}

void Form1::show_key_prompt() {
    if (!patient_defined || b_state < 1 || b_state > 4) return;
    const int prompt = b_state == 1 ? 261 : b_state == 4 ? 263 : 262;
    Label2.Caption = abort_message + message_text(prompt);
}

void Form1::disable_menus() {
    for (Control* entry : {&create_new_patient, &load_existing_patient, &Control_Panel,
                           &mnuVisualizePatientCurves, &save_settings_as_default, &About,
                           &zel_exit, &Patient_Settings, &mnuSessionHistory})
        entry->Enabled = false;
}

void Form1::enable_menus() {
    for (Control* entry : {&create_new_patient, &load_existing_patient, &Control_Panel,
                           &mnuVisualizePatientCurves, &save_settings_as_default, &About,
                           &zel_exit})
        entry->Enabled = true;
    mnuSessionHistory.Enabled = patient_defined;
    Patient_Settings.Enabled = patient_defined;
}

void Form1::disable_record_buttons() {
    cmdRecord.Enabled = false;
    cmdPause.Enabled = false;
    pauseRecordDisabled = true;
}

void Form1::restore_record_buttons() {
    pauseRecordDisabled = false;
    cmdRecord.Enabled = !bRecord;
    cmdPause.Enabled = bRecord;
}

void Form1::start_pause_cue() {
    pause_cue_visible = true;
    gating_label.Caption = message_text(229);
    gating_label.BackColor = yellow;
    Label4.Caption = message_text(288);
    Label4.BackColor = yellow;
}

void Form1::stop_pause_cue() {
    pause_cue_visible = false;
    pauseBeamTimer->set_Enabled(false);
    gating_label.BackColor = window_background;
    Label4.BackColor = window_background;
    if (patient_defined) {
        gating_label.Caption = message_text(!Gated_Treatment || Gating_OverRide ? 269 : 268);
        Label4.Caption = message_text(289);
    } else {
        gating_label.Caption.clear();
        Label4.Caption.clear();
    }
}

void Form1::pauseBeamTimer_Timer() { stop_pause_cue(); }

}  // namespace zel
