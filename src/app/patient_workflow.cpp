// The File and Settings menus' patient entries and the undoing of a patient. No patient can be
// changed during a breath hold.
#include "app/form1.h"
#include "data/file_access.h"
#include "language/messages.h"

namespace zel {

bool Form1::leave_current_patient() {
    if (!patient_defined) return true;
    if (b_state > 1) return false;
    show_Form8();
    if (save_session_response == vbCancel) return false;
    if (save_session_response == vbYes) save_session();
    reset_patient();
    return true;
}

void Form1::reset_patient() {
    abort_message.clear();
    const bool recording = cmdPause.Enabled && !cmdRecord.Enabled;
    if (recording) {
        if (curve_file) {
            curve_file->close();
            curve_file.reset();
        }
        make_read_only(record_filename);
        bRecord = false;
    }
    // The beam's relay is never left closed behind a patient that is gone.
    if (Gated_Treatment) release_gating_library();
    Patient_Settings.Enabled = false;
    mnuSessionHistory.Enabled = false;
    patient_defined = false;
    Label_last_name.Caption = message_text(226);
    for (Control* label : {&Label_first_name, &label_session, &label_patient_ID, &gating_label,
                           &Label2, &Label4})
        label->Caption.clear();
    disable_record_buttons();
    Gated_Treatment = false;
    Gating_OverRide = false;
    total_counts = 0;
    Image_Gating_Ready.Visible = false;
    Image_Gating_Fault.Visible = false;
    Image_Gating_Closed.Visible = false;
    Gating_Diagnostics.Enabled = true;
    if (checksum_log_open) {
        if (checksum_log) checksum_log->close();
        checksum_log.reset();
        checksum_log_open = false;
    }
}

void Form1::save_settings_as_default_Click() {
    stop_module_link();
    show_Form9();
    start_module_search();
}

void Form1::mnuVisualizePatientCurves_Click() {
    // The menu entry is off during a hold, so any state will do here.
    stop_module_link();
    platform.windows.show_modeless(Window::PatientCurves);
    start_module_search();
}

void Form1::show_patient_labels() {
    Label_last_name.Caption = patient_last_name;
    Label_first_name.Caption = patient_first_name;
    label_session.Caption = message_text(201) + QLatin1Char(' ') + session;
    label_patient_ID.Caption = message_text(117) + QLatin1Char(' ') + patient_medical_id;
}

void Form1::create_new_patient_Click() {
    if (b_state > 1 || settings_dialogs_open > 0) return;
    if (!leave_current_patient()) return;
    abort_message.clear();
    new_patient_loading = false;
    show_Form5();
    if (!form5->Cancel_status) save_patient_parameters();
    // A cancelled dialog leaves the names as the undone patient left them: "No patient
    // defined", not the names of the patient before. The gating library is still told that no
    // gated treatment stands, so that it keeps no relay permission of the patient before.
    if (patient_defined) show_patient_labels();
    if (Gated_Treatment) {
        gating_label.Caption = gating_start_mode = message_text(268);
        open_tarrow_link();
    } else {
        gating_label.Caption = gating_start_mode = message_text(269);
        close_tarrow_link();
    }
    if (!patient_defined) return;  // cancelled, or the gating library was missing
    Label4.Caption = message_text(289);
    record_file_created = false;
    cmdRecord.Enabled = true;
    show_Form2();
    total_counts = 0;
    patient_switch_toggles = 0;
    leave_fault_mode();
    sw_state = 1;
    Patient_Settings.Enabled = true;
    mnuSessionHistory.Enabled = true;
    upload_settings();
    Gating_Diagnostics.Enabled = false;
}

void Form1::load_existing_patient_Click() {
    if (b_state > 1 || settings_dialogs_open > 0) return;
    if (!leave_current_patient()) return;
    bool link_stopped = false;
    try {
        stop_module_link();
        link_stopped = true;
        load_chosen_patient();
    } catch (const ZelError& e) {
        if (e.number == err_cancelled) {
            start_module_search();
        } else if (e.number == err_file_not_found) {
            handle_missing_gating_library();
            // A chosen file gone before it was read: the link is not left stopped.
            if (link_stopped && !Timer_module_connect->Enabled() && !Timer_HeartBeat->Enabled())
                start_module_search();
        } else {
            Gated_Treatment = false;
            reset_patient();
            platform.boxes.MsgBox(message_text(129));
            start_module_search();
        }
    }
}

void Form1::load_chosen_patient() {
    abort_message.clear();
    new_patient_loading = true;
    patient_parameter_filename = platform.dialogs.open_file(
        data_directory, QStringLiteral("ZEL Patient Parameter File|*.zel"));
    if (patient_parameter_filename.isEmpty())
        throw ZelError(err_cancelled, QStringLiteral("load_existing_patient_Click"),
                       QStringLiteral("Cancel was selected."));
    if (!read_patient_parameter_file()) return;
    start_module_search();
    if (b_state >= 2) return;
    show_Form5();
    if (form5->Cancel_status || !patient_defined) return;
    show_patient_labels();
    record_file_created = false;
    cmdRecord.Enabled = true;
    total_counts = 0;
    patient_switch_toggles = 0;
    leave_fault_mode();
    sw_state = 1;
    upload_settings();

    take_over_holding_area();
    Patient_Settings.Enabled = true;
    mnuSessionHistory.Enabled = true;
    patient_switch_toggles = 0;
    upload_settings();
    update_chart_labels();
    leave_fault_mode();
    sw_state = 1;
    draw_chart();
    Gating_Diagnostics.Enabled = false;
    if (temp_gating == QLatin1String("True")) {
        // The first call into the gating library: a missing library fails here with 53.
        platform.tarrow.ClearTimingViolation();
        Gated_Treatment = true;
        open_tarrow_link();
        if (!patient_defined) return;
        gating_label.Caption = gating_start_mode = message_text(268);
        Label4.Caption = message_text(289);
    } else {
        gating_start_mode = message_text(269);
        Image_Gating_Ready.Visible = false;
        Image_Gating_Fault.Visible = false;
        Image_Gating_Closed.Visible = false;
        Gated_Treatment = false;
        gating_label.Caption = message_text(269);
        Label4.Caption = message_text(289);
    }
    show_Form2();
}

}  // namespace zel
