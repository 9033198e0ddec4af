#pragma once
// The review window: up to five recorded curves read from disk, drawn together, lined up on a
// common breath hold and exported in slices. It touches no live state of the console but the
// patient folder it opens its file dialog in and the name of the curve file being recorded,
// which an export never replaces.
#include <QString>
#include <QStringList>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <future>
#include <vector>

#include "app/control.h"
#include "app/proportional_layout.h"
#include "data/curve_file_reader.h"
#include "platform/file_dialogs.h"
#include "platform/locale.h"
#include "platform/message_box.h"
#include "review/review_chart.h"

namespace zel {

struct ReviewPlatform {
    FileDialogs& dialogs;
    MessageBoxes& boxes;
    Locale& locale;
};

// A curve file being read on a thread of its own.
struct CurveReading {
    QString path;
    std::future<CurveData> data;
};
std::vector<CurveReading> read_curves(const QStringList& paths, QChar separator);

struct CurveInfo {
    int16_t first_element = 0;
    double threshold = 0;
    int16_t element_count = 0;
    double time_shift = 0;
    std::vector<double> breath_hold_times;  // unshifted start of each hold
    QString curve_name;                     // never filled
    double min_volume = 0;
    double max_volume = 0;
    double count_frequency = 0;
    QString session;  // the header's session number, for the breath-hold statistics
};

// A list view in report mode with check boxes; entry i + 1 is item i here.
struct ListView : Control {
    struct Item {
        QString text;
        int image = 0;  // Legend bar, from 1
        bool checked = false;
    };
    std::vector<Item> items;
    QString column_text;
    double column_width = 0;  // twips
};

class PatientCurves {
public:
    PatientCurves(ReviewPlatform platform, QString data_directory);
    PatientCurves(const PatientCurves&) = delete;
    PatientCurves& operator=(const PatientCurves&) = delete;

    ReviewPlatform platform;
    QString data_directory;  // where the file dialog opens
    // The curve files the console is writing while this window is open: the session's, being
    // recorded or paused. Asked at each export, which never replaces one of them or a curve
    // of this window; unset where the review runs alone.
    std::function<QStringList()> files_being_written;

    // Loaded curves, by curve number.
    std::vector<QString> curve_paths;
    // Readings begun before the window was made, for a window opened straight on files: the
    // files are read while the window is being built, and the next load takes them up.
    std::vector<CurveReading> readings_ahead;
    int16_t curve_count = 0;
    int16_t visible_count = 0;
    std::vector<std::vector<double>> curve_time;
    std::vector<std::vector<double>> curve_volume;
    std::vector<std::vector<uint8_t>> curve_balloon;
    std::vector<std::vector<uint8_t>> curve_switch;
    std::vector<std::vector<double>> curve_session_time;
    std::vector<CurveInfo> curve_info;
    double default_rate = 1.0;
    std::array<Rgb, 6> curve_colors{};
    int16_t element_total = 0;

    // The two-point measurement.
    int16_t measure_start_element = 0;
    int16_t measure_line_element = 0;
    int16_t measure_end_element = 0;
    bool measure_dragging = false;
    bool measure_present = false;

    // The window and its controls; places in twips, children relative to their frame.
    QString Caption;
    double ScaleWidth = 0, ScaleHeight = 0;  // inner size
    bool minimized = false;
    bool unloaded = false;  // Exit has closed the window
    Control mnuFile, mnuOpenPatientFfiles, mnuExport, mnuClearPlot, mnuExit;
    // "Breath-hold Statistics": the holds of the curves shown, in a window of their own.
    Control mnuStatistics;
    Control NTGraph1_place;
    ReviewChart NTGraph1;
    ListView PatientList;
    Control Mode_frame, optZoom, optPan, optPanX, optMeasure, buttonResetZoom;
    Control Breath_Holds_Frame, buttonApply;
    ComboBox comboAlign;
    Control Frame1, time_label, XYInfo2, volume_label, XYInfo3;
    Control Measured_label, measured_time_label, XYInfo, measured_volume_label, XYInfo4;
    // Tool tips, by control.
    QString tool_tip(const Control& control) const;

    void Form_Load();
    // The window's load opened straight on files, as if they had been chosen in its dialog:
    // for the review on an office machine, without a module or a patient.
    void Form_Load(const QStringList& paths);
    void Form_Unload();
    void Form_Resize();

    // Loading.
    void multi_select_curve_files_from_disk();
    void refresh_curves();
    void load_all_curves();
    // Takes up the next curve from its reading, which fails here if the file was bad.
    void load_next_curve(std::future<CurveData>& reading);
    void erase_curves();
    void clear_all();
    void fill_patient_list();
    static QString curve_title_from_path(const QString& path);

    // The chart.
    void init_curve_colors();
    void plot_curve(int c);
    void clear_chart();
    void show_curve(int position, bool shown);
    void apply_list_visibility();
    void hide_unchecked_curves();
    void set_chart_range();
    void time_range(int32_t& start, int32_t& end) const;
    void volume_range(double& low, double& high) const;
    void update_menus();
    void clear_measurement();
    static QString TimeString(int32_t seconds);
    void record_layout();
    void scale_layout();

    // Alignment and export.
    void update_align_choices();
    void apply_alignment();
    void export_curve(int16_t index, double start, double end, const QString& path);

    // What the operator does.
    void mnuOpenPatientFfiles_Click();
    void mnuExport_Click();
    void mnuClearPlot_Click();
    void mnuExit_Click();
    void PatientList_ItemCheck(int index, bool checked);  // index from 1
    void optZoom_Click();
    void optPan_Click();
    void optPanX_Click();
    void optMeasure_Click();
    void buttonResetZoom_Click();
    void buttonApply_Click();
    void NTGraph1_CursorPosition(double x, double y);

private:
    // The controls in the window's collection order, with what record_layout kept of each.
    std::vector<Control*> layout_controls();
    ProportionalLayout layout;
    void place_controls();
    // The load's steps before the curves: list column, layout, colours, chart, captions, mode.
    void prepare_window();
    // The option buttons of the mouse modes are one group: choosing one clears the others.
    void select_mode(Control& option);
    bool entry_checked(int curve) const;
    // A grey element of the measurement from one point to another; its number.
    int16_t add_measure_element(int16_t type, int16_t width, double x1, double y1, double x2,
                                double y2);
    // One time of the export dialogue, asked until accepted; false when cancelled.
    bool ask_export_time(const QString& prompt, double limit, const double* start, double& value);
    // The file at `path` is, under whatever name, a curve of this window or one being written.
    bool is_curve_in_use(const QString& path) const;
};

// The line state of a sample: 0 breath hold, 1 free breathing, 2 switch off.
int sample_line_state(uint8_t balloon, uint8_t patient_switch);

// Whether a sample's session time follows the one before by one frame: the step rounded to
// the hundredth, ties up, is 0.02 s. Otherwise frames were lost between the two.
inline bool follows_by_one_frame(double step) { return std::floor(step * 100 + 0.5) / 100 == 0.02; }

}  // namespace zel
