#pragma once
// The main window's model: the owner of the live state. Its members and handlers carry the
// names under which the rest of the console addresses them; each handler is defined in the
// folder of the subsystem it belongs to.
#include <QFile>
#include <QString>
#include <functional>
#include <memory>

#include "app/app_state.h"
#include "app/form13.h"
#include "app/form1_controls.h"
#include "app/patient_state.h"
#include "app/zel_error.h"
#include "breathhold/cycle_state.h"
#include "data/append_file.h"
#include "data/settings_state.h"
#include "dialogs/form10.h"
#include "dialogs/form11.h"
#include "dialogs/form12.h"
#include "dialogs/form5.h"
#include "display/display_state.h"
#include "gating/form_gating.h"
#include "gating/gating_state.h"
#include "language/language_state.h"
#include "link/link_state.h"
#include "platform/platform.h"

namespace zel {

struct SystemSettings;

class Form1 : public AppState,
              public LinkState,
              public CycleState,
              public DisplayState,
              public GatingState,
              public PatientState,
              public SettingsState,
              public LanguageState,
              public Form1Controls {
public:
    Form1(Platform& platform, QString app_data_path);
    ~Form1();
    Form1(const Form1&) = delete;
    Form1& operator=(const Form1&) = delete;

    Platform& platform;
    const QString AppDataPath;

    // Frame reception (link).
    void MSComm1_OnComm();
    uint8_t read_byte();
    bool checksum_ok() const;
    void log_checksum_error();

    // Frame decoding (link).
    void process_data_packet();
    void process_status_packet();
    // The curve file's line for the present frame, without its line end.
    QString recording_line() const;
    void write_recording_line();

    // Commands to the module (link). False when the command did not leave whole: a linked
    // module is then lost, as if it had gone silent, and a port being tried is closed.
    bool send_command(const char* letters);
    bool send_byte(uint8_t byte);
    bool sent_to_module(bool sent);
    void upload_settings();
    void stop_module_link();

    // The search for the module and the heartbeat (link).
    void start_module_search();
    void enumerate_com_ports();
    void Timer_module_connect_Timer();
    void Timer_HeartBeat_Timer();
    // The link is lost: the port closed, the search started, a running hold ended safely.
    void lose_module_link();

    // The breath-hold cycle (breathhold).
    void read_patient_switch();
    void process_balloon_state();
    void show_key_prompt();
    void disable_menus();
    void enable_menus();
    void disable_record_buttons();
    void restore_record_buttons();
    void start_pause_cue();
    void stop_pause_cue();
    void pauseBeamTimer_Timer();

    // Keys (breathhold).
    void Form_KeyDown(int key_code, int shift);

    // Faults (breathhold).
    void enter_fault_mode(const QString& text);
    void leave_fault_mode();
    void Timer1_Timer();
    void fault_summary();

    // The gating library (gating).
    void _Tarrow_SetRelayState(uint8_t close_relay);
    void open_tarrow_link();
    void close_tarrow_link();
    // Lets the library go, the relay opened first: once closed, no call reaches the relay.
    void release_gating_library();
    // Without the library there is no gated treatment and no gated patient.
    void handle_missing_gating_library();
    void analyse_tarrow_status();
    void gating_connection_lost();
    // One lamp of the three on, the others off.
    void show_gating_lamp(Control& lamp);
    void offer_way_back_to_automated();
    void withdraw_override_question();
    void show_Form_OverRide_Enable();
    void show_Form_OverRide_Disable();
    void show_Form_FastGatingClear();
    void write_tarrow_log();
    void poll_tarrow_status();

    // Strip chart (display).
    void draw_chart();
    void plot_sample();
    void draw_threshold_box();
    bool volume_in_threshold_region() const;

    // Main window layout (display).
    void layout_main_window();
    void update_chart_labels();
    void Timer2_Timer();

    // The curve file of a session (data).
    void cmdRecord_Click();
    void cmdPause_Click();
    void printHeader(const QString& path);
    QStringList curve_header_lines() const;
    QString curve_file_path() const;
    void open_curve_file(const QString& path);

    // System settings files and the number format (data).
    void detect_number_format();
    void load_system_settings();
    void load_default_system_settings();
    void apply_system_settings(const SystemSettings& settings);
    void save_ini_file();
    QString read_data_path();
    bool write_data_path(QString& path);
    QString Select_patient_datapath();

    // Language files (language).
    void load_language_catalogue();
    void read_language_file(const QString& path);

    // Start-up and shutdown (app).
    void Form_Load();
    void logo_banner_Timer();
    void zel_exit_Click();
    // The main window's close box: the Exit entry, and nothing while the entry is off.
    void Form_QueryUnload();
    // The system check window's exit button.
    void Form13_Command1_Click();

    // The patient's parameter file (data).
    void save_patient_parameters();
    // Runs the load's tests on patient_parameter_filename and fills the holding area; false
    // when a test refused the file, after its report. Failures of reading are thrown.
    bool read_patient_parameter_file();
    void take_over_holding_area();
    void show_patient_file_message(Window window, const QStringList& texts);
    // The patient workflow (app).
    void load_existing_patient_Click();
    void create_new_patient_Click();
    // The review of recorded curves, beside the console, with the link stopped while it loads.
    void mnuVisualizePatientCurves_Click();
    // The patient's session history, modal (history).
    void mnuSessionHistory_Click();
    void save_session();
    void load_chosen_patient();
    // The names, session and medical ID of the patient in force on the main window.
    void show_patient_labels();
    // The session history (data).
    QString sessionfile(const QString& last, const QString& first, const QString& id) const;
    bool write_session_entry(const QString& path);
    QString get_next_sessionID(const QString& last, const QString& first, const QString& id);
    bool checkIfSessionExists(const QString& id);
    bool session_exists(const QString& path, const QString& id);
    void report_session_history_failure(const char* source);
    void save_settings_as_default_Click();
    // The start common to creating and loading: the session question, then the patient undone.
    // False when the present patient stays.
    bool leave_current_patient();
    void reset_patient();

    // Question dialogs (app).
    void show_Form3();  // load, create or neither
    void show_Form8();  // save the session history? into save_session_response
    void show_Form2();  // start recording?
    void show_Form9();  // save the settings as the defaults?
    void show_Form_ConfirmCancel();  // discard the changes? into confirm_cancel

    // The new-patient dialog (dialogs).
    // Opens Form5 fresh, in the mode that new_patient_loading chooses, and returns when it is
    // closed; form5 stays until the next opening, so that the caller reads Cancel_status.
    void show_Form5();
    std::unique_ptr<Form5> form5;

    // The Help menu's windows: the About box with the module's levels, and the gating
    // system's service view. Each stands while it is open.
    void About_Click();
    void Gating_Diagnostics_Click();
    std::unique_ptr<Form10> form10;
    std::unique_ptr<FormGating> form_gating;
    // The Settings menu (app): the patient's and the system's settings dialogs, refused while a
    // hold is under way. Each dialog is opened fresh and stays until the next opening.
    void Patient_Settings_Click();
    void Control_Panel_Click();
    void show_Form12();
    void show_Form11();
    // Shows Form5, Form11 or Form12: no hold may be armed while one of them stands, since its
    // Save would alter the patient's settings under the armed module.
    void show_settings_dialog(Window window);
    std::unique_ptr<Form12> form12;
    std::unique_ptr<Form11> form11;

    // The system check window while it stands.
    Form13 form13;
    void Timer_form13_close_delay_Timer();

    // Timers.
    std::unique_ptr<Timer> Timer_module_connect;
    std::unique_ptr<Timer> Timer_HeartBeat;
    std::unique_ptr<Timer> Timer1;
    std::unique_ptr<Timer> pauseBeamTimer;
    std::unique_ptr<Timer> Timer_form13_close_delay;
    std::unique_ptr<Timer> logo_banner;
    std::unique_ptr<Timer> Timer2;

    // Files open for the whole run.
    std::unique_ptr<AppendFile> checksum_log;
    std::unique_ptr<AppendFile> curve_file;

    // Runs an event handler; a failure that no routine handled is reported and ends the
    // program after the open files are closed.
    void run_event(const char* source, const std::function<void()>& handler);
    // Before the report of such a failure: every entry latched, the timers stopped, the relay
    // opened if it may be closed, the gating link, the port and the run files closed.
    void stop_after_failure();
    void close_run_files();
    // The system asks the program to end (a shutdown, a logout, an interrupt): the fail-safe
    // end without its report, the relay opened first; the program ends with 128 + the number.
    void end_on_signal(int signal_number);
    // The gating relay may stand closed: a gated hold is under way or a close was commanded.
    bool relay_may_be_closed() const;
    void halt_timers();
    // A recording's file closed and made read-only, as the end of a session leaves it.
    void close_curve_file_read_only();
    // Ends the program; the application sets it, tests record it.
    std::function<void(int exit_code)> end_program;
};

}  // namespace zel
