// The Settings menu: the patient's settings and the system's, neither while a hold is armed or
// running.
#include <QScopeGuard>

#include "app/form1.h"

namespace zel {

void Form1::Patient_Settings_Click() {
    if (b_state > 1 || settings_dialogs_open > 0) return;
    patient_settings_cancel = false;
    form12_open = true;
    // The link runs on behind this dialog: the gating supervision keeps polling, and an
    // override taken meanwhile shows in the dialog's gating box.
    show_Form12();
    // The chart is redrawn once the module confirms the new settings. A hold found under way
    // (the module re-found behind the dialog) is never altered.
    if (patient_defined && !patient_settings_cancel && b_state <= 1) {
        save_patient_parameters();
        upload_settings();
    }
}

void Form1::Control_Panel_Click() {
    if (b_state > 1 || settings_dialogs_open > 0) return;
    // Frames and the gating supervision go on under the dialog, as under every modal one.
    show_Form11();
    if (b_state > 1) return;
    // The file's date and checksum change even when nothing else did.
    if (patient_defined) save_patient_parameters();
    draw_chart();
    update_chart_labels();
}

void Form1::show_Form12() {
    form12 = std::make_unique<Form12>(*this);
    form12->Form_Load();
    show_settings_dialog(Window::Form12);
}

void Form1::show_Form11() {
    form11 = std::make_unique<Form11>(*this);
    form11->Form_Load();
    show_settings_dialog(Window::Form11);
}

void Form1::show_settings_dialog(Window window) {
    ++settings_dialogs_open;
    const auto closed = qScopeGuard([this] { --settings_dialogs_open; });
    platform.windows.show_modal(window);
}

}  // namespace zel
