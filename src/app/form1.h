#pragma once
// The main window's model: the owner of the live state. Its members and handlers carry the
// names under which the rest of the console addresses them; each handler is defined in the
// folder of the subsystem it belongs to.
#include <QFile>
#include <QString>
#include <functional>
#include <memory>

#include "app/form1_controls.h"
#include "app/patient_state.h"
#include "app/zel_error.h"
#include "breathhold/cycle_state.h"
#include "display/display_state.h"
#include "gating/gating_state.h"
#include "link/link_state.h"
#include "platform/platform.h"

namespace zel {

class Form1 : public LinkState,
              public CycleState,
              public DisplayState,
              public GatingState,
              public PatientState,
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

    // Commands to the module (link).
    void send_command(const char* letters);

    // Strip chart (display).
    void draw_chart();
    void plot_sample();
    void draw_threshold_box();
    bool volume_in_threshold_region() const;

    // Start-up (app).
    void Form_Load();

    // Files open for the whole run.
    std::unique_ptr<QFile> checksum_log;

    // Runs an event handler; a failure that no routine handled is reported and ends the
    // program after the open files are closed.
    void run_event(const char* source, const std::function<void()>& handler);
    void close_run_files();
    // Ends the program; the application sets it, tests record it.
    std::function<void(int exit_code)> end_program;
};

}  // namespace zel
