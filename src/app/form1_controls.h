#pragma once
// The controls of the main window.
#include "app/control.h"

namespace zel {

struct Form1Controls {
    Control Pic;            // the strip chart's surface
    Control thresh_label;   // the threshold's value beside the chart
    Control elapsed_label;  // session time
    Control volume_label;   // the latest volume
    Control countdown2;     // seconds left in a hold
    Control Label2;         // prompts, fault and abort texts
    // The volume scale beside the chart, top to bottom.
    Control ylabel1, ylabel2, ylabel3, ylabel4, ylabel5, ylabel6, ylabel7, ylabel8, ylabel9;
    Control Label1;          // time per division under the chart
    Control infolabel3;      // date and time
    Control infolabel5;      // "Elapsed Time:"
    Control Frame2;          // the status panel under the chart
    Control Label_last_name;
    Control Label_first_name;
    Control label_patient_ID;
    Control label_session;
    Control upper_thresh_label;
    Control iconA;           // the product logo
    double Width = 15360, Height = 11520;  // the window, in twips
    QString Caption;                       // the window's title
    Control gating_label;   // treatment mode, or the pause cue
    Control Label4;         // "Gating", or "Beam" under the pause cue
    Control cmdRecord;
    Control cmdPause;
    // Gating lamps: one at a time is visible in a gated treatment.
    Control Image_Gating_Ready;
    Control Image_Gating_Closed;
    Control Image_Gating_Fault;

    // Menu entries.
    Control create_new_patient;
    Control load_existing_patient;
    Control Control_Panel;
    Control mnuVisualizePatientCurves;
    Control save_settings_as_default;
    Control About;
    Control zel_exit;
    Control Patient_Settings;
    Control mnuSessionHistory;
    Control file_main;
    Control set_params;
    Control mnuView;
    Control data_handle;
    Control export_volume_curve;
    Control Help_menu;
    Control Gating_Diagnostics;

    Control* ylabel(int k);  // ylabel1 .. ylabel9
    // Sizes, fonts, colours and first captions before the layout places them.
    void set_design_values();
};

}  // namespace zel
