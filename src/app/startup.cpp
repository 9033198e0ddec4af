// The program's start and its end.
#include "app/form1.h"
#include "app/release.h"
#include "data/file_access.h"
#include "language/messages.h"

namespace zel {

void Form1::Form_Load() {
    platform.windows.show_main_window(false);
    form12_open = false;
    form13_open = false;
    pauseRecordDisabled = false;
    Recover_Comm_During_Gated_Treatment = false;
    Gated_Treatment = false;
    Gating_OverRide = false;
    patient_settings_cancel = false;
    record_file_created = false;

    // The number format comes before any file is read.
    detect_number_format();

    checksum_log_open = false;
    pause_cue_visible = false;
    about_visible = false;
    tarrow_Enable_error = false;
    tarrow_error_lock = false;
    fault_mode_enabled = false;
    waiting_for_data = false;
    Patient_Settings.Enabled = false;
    mnuSessionHistory.Enabled = false;
    pneumatic_fault = false;
    transducer_fault = false;
    line_fault = false;
    battery_fault = false;
    sw_state = 1;
    count_frequency = 50;
    breath_holds = 0;

    major_revision_level = QString::fromLatin1(release::major_revision_level);
    minor_revision_level = QString::fromLatin1(release::minor_revision_level);
    software_version = release::software_version();
    patient_parameter_filestamp = QString::fromLatin1(release::patient_parameter_filestamp);
    system_parameter_filestamp =
        QStringLiteral("ZEL System Parameter File - DO NOT EDIT ") + software_version;

    load_system_settings();
    // From here on every text comes from the catalogue.
    load_language_catalogue();

    logSubDir = QStringLiteral("LOG");
    Caption = message_text(108) + software_version;

    battery_level_conversion_factor = 0.0363;
    line_level_conversion_factor = 0.0588;
    battery_cutoff_level = 3.75f;
    line_cutoff_level = 10.0f;
    vacuum_cutoff_level = 3.0f;
    pressure_cutoff_level = 5.0f;
    forward_calibration_factor = 0.004f;
    reverse_calibration_factor = 0.004f;
    min_x = 0;

    data_directory = read_data_path();
    if (data_directory.isEmpty()) {
        stop_module_link();
        platform.boxes.MsgBox(message_text(109), vbOKOnly, {});
        start_module_search();
        QString chosen = Select_patient_datapath();
        if (chosen.isEmpty()) {
            // Without a place for patient files the console cannot work.
            if (end_program) end_program(0);
            return;
        }
        data_directory = chosen;
        if (!write_data_path(chosen)) {
            stop_module_link();
            platform.boxes.MsgBox(message_text(176), vbOKOnly, {});
            start_module_search();
        }
    }
    corrupt_directory = data_directory + QStringLiteral("/Corrupt");

    layout_main_window();
    update_chart_labels();

    logo_banner->set_Enabled(true);
    platform.windows.show_modal(Window::Form6);

    system_check_result = true;
    pneumatic_fault = false;
    transducer_fault = false;
    line_fault = false;
    battery_fault = false;

    start_module_search();
    form13_open = true;
    form13.Form_Load();
    platform.windows.show_modal(Window::Form13);

    hhkLowLevelKybd = platform.windows.install_key_guard();

    if (!system_check_result) {
        // The system check has shown the failure; there is nothing more to say.
        if (platform.serial.PortOpen()) platform.serial.set_PortOpen(false);
        if (end_program) end_program(0);
        return;
    }

    file_main.Caption = message_text(206);
    create_new_patient.Caption = message_text(207);
    load_existing_patient.Caption = message_text(208);
    save_settings_as_default.Caption = message_text(209);
    zel_exit.Caption = message_text(210);
    set_params.Caption = message_text(211);
    Control_Panel.Caption = message_text(212);
    Patient_Settings.Caption = message_text(213);
    mnuView.Caption = message_text(214);
    mnuSessionHistory.Caption = message_text(215);
    data_handle.Caption = message_text(216);
    mnuVisualizePatientCurves.Caption = message_text(217);
    Help_menu.Caption = message_text(218);
    About.Caption = message_text(219);
    Gating_Diagnostics.Caption = message_text(337);
    infolabel5.Caption = message_text(221);
    Label_last_name.Caption = message_text(226);
    cmdRecord.Caption = message_text(228);
    cmdPause.Caption = message_text(229);
    label_patient_ID.Caption.clear();
    Label_first_name.Caption.clear();
    label_session.Caption.clear();

    if (x_scale_factor == 1.0f)
        Label1.Caption = message_text(190);
    else if (x_scale_factor == 2.0f)
        Label1.Caption = message_text(191);
    else if (x_scale_factor == 3.0f)
        Label1.Caption = message_text(192);

    platform.windows.show_main_window(true);

    show_Form3();
}

void Form1::logo_banner_Timer() {
    ++flash_counter;
    if (flash_counter > 1) {
        logo_banner->set_Enabled(false);
        platform.windows.unload(Window::Form6);
    }
}

void Form1::Form13_Command1_Click() {
    form13_open = false;
    platform.windows.unload(Window::Form13);
    system_check_result = false;
}

void Form1::Form_QueryUnload() {
    if (zel_exit.Enabled) zel_exit_Click();
}

void Form1::zel_exit_Click() {
    if (patient_defined) {
        show_Form8();
        if (save_session_response == vbCancel) return;
        if (save_session_response == vbYes) save_session();

        const bool recording = cmdPause.Enabled && !cmdRecord.Enabled;
        if (recording) close_curve_file_read_only();
        if (checksum_log_open) close_run_files();
        if (platform.serial.PortOpen()) send_command("d");
        if (Gated_Treatment) release_gating_library();
    }
    // The program never ends with the beam's relay left closed.
    if (relay_close_commanded) _Tarrow_SetRelayState(0);
    if (hhkLowLevelKybd) {
        platform.windows.remove_key_guard();
        hhkLowLevelKybd = false;
    }
    if (platform.serial.PortOpen()) platform.serial.set_PortOpen(false);
    if (end_program) end_program(0);
}

}  // namespace zel
