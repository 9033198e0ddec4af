#include "review/patient_curves.h"

#include <utility>

#include "language/messages.h"

namespace zel {

PatientCurves::PatientCurves(ReviewPlatform platform, QString data_directory)
    : platform(platform), data_directory(std::move(data_directory)) {
    place_controls();
}

void PatientCurves::place_controls() {
    // A 1010 by 680 pixel inner area: the chart on the left, the list and tools on the right.
    ScaleWidth = 15150;
    ScaleHeight = 10200;
    place_twips(NTGraph1_place, 120, 120, 11400, 9960);
    const double x = 11640, w = 3390;
    place_twips(PatientList, x, 120, w, 2400);
    PatientList.BackColor = Rgb{255, 255, 255};
    place_twips(Mode_frame, x, 2640, w, 2280);
    place_twips(optZoom, 180, 300, 1500, 300);
    place_twips(optPan, 180, 660, 1500, 300);
    place_twips(optPanX, 180, 1020, 1500, 300);
    place_twips(optMeasure, 180, 1380, 1500, 300);
    place_twips(buttonResetZoom, 1800, 300, 1380, 420);
    place_twips(Breath_Holds_Frame, x, 5040, w, 1200);
    place_twips(comboAlign, 180, 420, 1500, 330);
    place_twips(buttonApply, 1800, 360, 1380, 420);
    place_twips(Frame1, x, 6360, w, 3720);
    place_twips(time_label, 180, 300, 3000, 255);
    place_twips(XYInfo2, 180, 570, 3000, 510);
    place_twips(volume_label, 180, 1140, 3000, 255);
    place_twips(XYInfo3, 180, 1410, 3000, 255);
    place_twips(Measured_label, 180, 1860, 3000, 255);
    place_twips(measured_time_label, 180, 2160, 3000, 255);
    place_twips(XYInfo, 180, 2430, 3000, 255);
    place_twips(measured_volume_label, 180, 2820, 3000, 255);
    place_twips(XYInfo4, 180, 3090, 3000, 255);
    for (Control* info : {&XYInfo, &XYInfo2, &XYInfo3, &XYInfo4}) info->font.bold = true;
}

QString PatientCurves::tool_tip(const Control& control) const {
    const std::pair<const Control*, const char*> tips[] = {
        {&optZoom, "Zoom into. Right click on plot to zoom out"},
        {&optPan, "Pan in the horizontal and vertical direction"},
        {&optPanX, "Pan in the horizontal direction"},
        {&buttonResetZoom, "Zoom to default"},
        {&Mode_frame, "Mouse Modes"},
        {&Frame1, "Time and Volume Information of the cursor position"},
        {&Breath_Holds_Frame, "Common Breath Holds"},
        {&comboAlign, "Select the common breath hold"},
        {&buttonApply, "Align the curve(s) to the selected breath hold"},
    };
    for (const auto& [c, tip] : tips)
        if (c == &control) return QString::fromLatin1(tip);
    return {};
}

void PatientCurves::Form_Load() {
    prepare_window();
    clear_all();
    multi_select_curve_files_from_disk();
    refresh_curves();
}

void PatientCurves::Form_Load(const QStringList& paths) {
    prepare_window();
    clear_all();
    // The first five, as many as the dialog would take.
    for (const QString& path : paths.mid(0, 5)) curve_paths.push_back(path);
    if (paths.size() > 5) platform.boxes.MsgBox(message_text(169), vbExclamation);
    refresh_curves();
}

void PatientCurves::prepare_window() {
    PatientList.column_text = message_text(318);
    PatientList.column_width = 2700;
    record_layout();
    init_curve_colors();
    NTGraph1.ShowGrid = true;
    NTGraph1.XLabel = message_text(165);
    NTGraph1.YLabel = message_text(166);
    const std::pair<Control*, int> captions[] = {
        {&mnuFile, 206},        {&mnuOpenPatientFfiles, 246}, {&mnuExport, 247},
        {&mnuClearPlot, 248},   {&mnuExit, 249},              {&optPan, 250},
        {&optPanX, 251},        {&optMeasure, 252},           {&optZoom, 253},
        {&buttonResetZoom, 254}, {&buttonApply, 255},         {&time_label, 165},
        {&volume_label, 166},   {&Mode_frame, 258},           {&Breath_Holds_Frame, 259},
        {&mnuStatistics, 362},
    };
    for (const auto& [control, row] : captions) control->Caption = message_text(row);
    Caption = message_text(167);
    optZoom_Click();
}

void PatientCurves::Form_Unload() {
    clear_all();
    unloaded = true;
}

void PatientCurves::mnuExit_Click() { Form_Unload(); }

void PatientCurves::mnuOpenPatientFfiles_Click() {
    // A measurement standing would throw the numbering of the new curve's elements off.
    clear_measurement();
    multi_select_curve_files_from_disk();
    refresh_curves();
}

void PatientCurves::mnuClearPlot_Click() {
    clear_all();
    visible_count = 0;
    refresh_curves();
    PatientList.Enabled = true;
    measure_present = false;
}

void PatientCurves::select_mode(Control& option) {
    for (Control* c : {&optZoom, &optPan, &optPanX, &optMeasure}) c->Value = c == &option;
}

void PatientCurves::optZoom_Click() {
    select_mode(optZoom);
    NTGraph1.TrackMode = track_zoom;
}

void PatientCurves::optPan_Click() {
    select_mode(optPan);
    clear_measurement();
    NTGraph1.TrackMode = track_pan;
}

void PatientCurves::optPanX_Click() {
    select_mode(optPanX);
    clear_measurement();
    NTGraph1.TrackMode = track_pan_x;
}

void PatientCurves::optMeasure_Click() {
    select_mode(optMeasure);
    NTGraph1.TrackMode = track_measure;
}

void PatientCurves::buttonResetZoom_Click() {
    clear_measurement();
    set_chart_range();
}

void PatientCurves::buttonApply_Click() {
    clear_measurement();
    apply_alignment();
}

void PatientCurves::update_menus() {
    mnuClearPlot.Enabled = curve_count != 0;
    mnuExport.Enabled = visible_count != 0;
    mnuStatistics.Enabled = curve_count != 0 && visible_count != 0;
}

std::vector<Control*> PatientCurves::layout_controls() {
    return {&NTGraph1_place, &PatientList, &Mode_frame, &optZoom, &optPan, &optPanX, &optMeasure,
            &buttonResetZoom, &Breath_Holds_Frame, &comboAlign, &buttonApply, &Frame1,
            &time_label, &XYInfo2, &volume_label, &XYInfo3, &Measured_label,
            &measured_time_label, &XYInfo, &measured_volume_label, &XYInfo4};
}

void PatientCurves::record_layout() {
    layout.record(layout_controls(), ScaleWidth, ScaleHeight);
}

void PatientCurves::Form_Resize() {
    if (!minimized) scale_layout();
}

void PatientCurves::scale_layout() {
    // The drop-down list keeps the height the system gives it.
    layout.scale(layout_controls(), ScaleWidth, ScaleHeight, &comboAlign);
}

}  // namespace zel
