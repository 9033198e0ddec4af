// The File and Settings menus' patient entries and the undoing of a patient. No patient can be
// changed during a breath hold.
#include <QFile>

#include "app/form1.h"
#include "language/messages.h"

namespace zel {

namespace {
void make_read_only(const QString& path) {
    QFile::setPermissions(path, QFile::permissions(path) & ~(QFile::WriteOwner | QFile::WriteUser |
                                                             QFile::WriteGroup | QFile::WriteOther));
}
}  // namespace

bool Form1::leave_current_patient() {
    if (!patient_defined) return true;
    if (b_state > 1) return false;
    show_Form8();
    if (save_session_response == vbCancel) return false;
    if (save_session_response == vbYes) save_session_history();
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
    if (Gated_Treatment) {
        // The beam's relay is never left closed behind a patient that is gone.
        if (relay_close_commanded) _Tarrow_SetRelayState(0);
        platform.tarrow.Close();
    }
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

// Loading a patient's parameter file, creating a patient and saving the session history
// come with the patient files; until then these entries change nothing.
void Form1::load_existing_patient_Click() {
    if (b_state > 1) return;
}

void Form1::create_new_patient_Click() {
    if (b_state > 1) return;
}

void Form1::save_session_history() {}

}  // namespace zel
