// Drawing the loaded curves as chart elements, the axis ranges and the two-point measurement.
#include <cmath>
#include <cstdlib>

#include "app/helpers.h"
#include "app/zel_error.h"
#include "language/messages.h"
#include "review/patient_curves.h"

namespace zel {

namespace {

constexpr Rgb black{0, 0, 0};
constexpr Rgb measure_grey{150, 150, 150};
constexpr const char* plot_source = "plot_curve";

// Element numbers are 16-bit: a curve that changes its look at every sample runs out of them.
int16_t next_element(int16_t elem) { return add_i16(elem, 1, plot_source); }

}  // namespace

int sample_line_state(uint8_t balloon, uint8_t patient_switch) {
    if (balloon == 4 && patient_switch == 1) return 0;
    if (balloon != 4 && patient_switch == 1) return 1;
    if (patient_switch == 0) return 2;
    return 0;
}

void PatientCurves::init_curve_colors() {
    curve_colors = {Rgb{255, 0, 0}, Rgb{0, 255, 0}, Rgb{0, 0, 255},
                    Rgb{255, 0, 255}, Rgb{255, 128, 0}, Rgb{0, 0, 0}};
}

void PatientCurves::clear_chart() {
    NTGraph1.ClearGraph();
    element_total = 0;
}

void PatientCurves::plot_curve(int c) {
    CurveInfo& info = curve_info.at(c);
    int16_t elem = element_total;
    const std::vector<double>& time = curve_time.at(c);
    const std::vector<double>& volume = curve_volume.at(c);
    const std::vector<uint8_t>& balloon = curve_balloon.at(c);
    const std::vector<uint8_t>& patient_switch = curve_switch.at(c);
    const std::vector<double>& session_time = curve_session_time.at(c);
    try {
        info.first_element = elem;
        info.breath_hold_times.clear();
        // The number is taken before the element is added, so that the chart holds exactly
        // the elements counted when the numbers run out.
        elem = next_element(elem);
        NTGraph1.AddElement();
        NTGraph1.ElementLineColor(curve_colors[c]);
        NTGraph1.ElementLinetype(0);
        NTGraph1.ElementWidth(3);
        const int16_t threshold_element = elem;
        elem = next_element(elem);
        NTGraph1.AddElement();
        NTGraph1.ElementLineColor(black);
        NTGraph1.ElementLinetype(0);
        NTGraph1.ElementWidth(3);
        const int16_t zero_element = elem;
        // Both lines take a point at every sample.
        NTGraph1.ReservePoints(threshold_element, time.size());
        NTGraph1.ReservePoints(zero_element, time.size());

        // A curve that was never read has no first sample.
        if (session_time.empty())
            throw ZelError(err_subscript, QString::fromLatin1(plot_source),
                           QStringLiteral("Subscript out of range"));
        // The line state of every sample first, so that each run's element gets its room at
        // once: a long curve plots hundreds of thousands of points.
        const size_t n = time.size();
        std::vector<uint8_t> states(n, 0);
        double last_stamp = session_time[0] - 0.02;
        for (size_t i = 1; i < n; ++i) {
            int state = sample_line_state(balloon[i], patient_switch[i]);
            // Lost samples show as a gap in the session time; the frame period is fixed.
            if (!follows_by_one_frame(session_time[i] - last_stamp)) state = 3;
            last_stamp = session_time[i];
            states[i] = static_cast<uint8_t>(state);
        }
        int last_state = 255;
        double highest, lowest;
        // The range always takes in 0 and the threshold line.
        if (info.threshold <= 0) {
            lowest = info.threshold;
            highest = 0;
        } else {
            highest = info.threshold;
            lowest = 0;
        }
        for (size_t i = 1; i < n; ++i) {
            // The volume one sample behind the time: the first point drawn is (1 frame, 0 L).
            const double t = time[i];
            const double v = volume[i - 1];
            if (v > highest) highest = v;
            if (v < lowest) lowest = v;
            const int state = states[i];
            if (state != last_state) {
                const double x = info.time_shift + t;
                if (elem != zero_element && elem != threshold_element) NTGraph1.PlotXY(x, v, elem);
                elem = next_element(elem);
                NTGraph1.AddElement();
                NTGraph1.ElementLineColor(curve_colors[c]);
                // Its samples and the point that joins it to the next run.
                size_t run = 1;
                while (i + run < n && states[i + run] == state) ++run;
                NTGraph1.ReservePoints(elem, run + 1);
                switch (state) {
                    case 0:
                        if (last_state == 1) info.breath_hold_times.push_back(t);
                        NTGraph1.ElementLinetype(0);
                        NTGraph1.ElementWidth(5);
                        break;
                    case 1:
                        NTGraph1.ElementLinetype(0);
                        NTGraph1.ElementWidth(2);
                        break;
                    case 2: NTGraph1.ElementLinetype(2); break;
                    case 3:
                        NTGraph1.ElementLinetype(0);
                        NTGraph1.ElementWidth(2);
                        NTGraph1.ElementLineColor(black);
                        break;
                    default:
                        throw ZelError(0, QStringLiteral("Form_Load"), message_text(106));
                }
                last_state = state;
            }
            const double x = info.time_shift + t;
            NTGraph1.PlotXY(x, v, elem);
            NTGraph1.PlotXY(x, info.threshold, threshold_element);
            NTGraph1.PlotXY(x, 0.0, zero_element);
        }
        info.element_count = static_cast<int16_t>(elem - info.first_element);
        info.max_volume = highest;
        info.min_volume = lowest;
        element_total = elem;
    } catch (const ZelError&) {
        // Exactly the elements this call added, the last first: the curves before this one
        // stay on the chart whole.
        for (int k = elem; k > element_total; --k) NTGraph1.DeleteElement(static_cast<int16_t>(k));
        throw;
    }
}

void PatientCurves::show_curve(int position, bool shown) {
    const CurveInfo& info = curve_info.at(position - 1);
    for (int k = info.first_element + 1; k <= info.first_element + info.element_count; ++k) {
        NTGraph1.Element(static_cast<int16_t>(k));
        NTGraph1.ElementShow(shown);
    }
}

void PatientCurves::apply_list_visibility() {
    for (size_t k = 0; k < PatientList.items.size(); ++k)
        if (static_cast<int>(k) < curve_count)
            show_curve(static_cast<int>(k) + 1, PatientList.items[k].checked);
}

void PatientCurves::hide_unchecked_curves() {
    for (int c = 0; c < curve_count; ++c)
        if (!entry_checked(c)) show_curve(c + 1, false);
}

void PatientCurves::set_chart_range() {
    int32_t x0, x1;
    double y0, y1;
    time_range(x0, x1);
    volume_range(y0, y1);
    NTGraph1.SetRange(x0, x1, y0, y1);
}

void PatientCurves::time_range(int32_t& start, int32_t& end) const {
    if (curve_count < 1) {
        start = 0;
        end = 1;
        return;
    }
    start = 2147483647;
    end = -2147483647;
    for (int c = 0; c < curve_count; ++c) {
        if (!entry_checked(c) || curve_time[c].empty()) continue;
        const int32_t a = round_to_int32(curve_time[c].front() + curve_info[c].time_shift);
        const int32_t b = round_to_int32(curve_time[c].back() + curve_info[c].time_shift);
        if (a < start) start = a;
        if (b > end) end = b;
    }
    if (start == 2147483647) start = 0;
    // Kept as it always was: with nothing shown it is the start that becomes 1.
    if (end == -2147483647) start = 1;
}

void PatientCurves::volume_range(double& low, double& high) const {
    if (curve_count < 1) {
        low = -2.0;
        high = 2.0;
        return;
    }
    low = 2147483647.0;
    high = -2147483647.0;
    for (int c = 0; c < curve_count; ++c) {
        if (!entry_checked(c)) continue;
        if (curve_info[c].min_volume < low) low = curve_info[c].min_volume;
        if (curve_info[c].max_volume > high) high = curve_info[c].max_volume;
    }
    if (low == 2147483647.0) low = -2.0;
    // As in time_range, the first bound is the one written.
    if (high == -2147483647.0) low = 2.0;
    // Zero in the middle, 0.3 L of room, at least a litre each way.
    if (std::fabs(high) < std::fabs(low)) {
        high = std::fabs(low) + 0.3;
        low = -std::fabs(low) - 0.3;
    } else {
        low = -std::fabs(high) - 0.3;
        high = std::fabs(high) + 0.3;
    }
    if (high < 1.0) {
        high = 1.0;
        low = -1.0;
    }
}

void PatientCurves::PatientList_ItemCheck(int index, bool checked) {
    if (index < 1 || index > static_cast<int>(PatientList.items.size())) return;
    PatientList.items[index - 1].checked = checked;
    int16_t count = 0;
    for (const auto& item : PatientList.items) count = static_cast<int16_t>(count + item.checked);
    visible_count = count;
    clear_measurement();
    if (index <= curve_count) show_curve(index, checked);
    set_chart_range();
    update_align_choices();
    update_menus();
}

void PatientCurves::clear_measurement() {
    if (!measure_present) return;
    NTGraph1.DeleteElement(measure_end_element);
    NTGraph1.DeleteElement(measure_line_element);
    NTGraph1.DeleteElement(measure_start_element);
    element_total = static_cast<int16_t>(element_total - 3);
    measure_dragging = false;
    measure_present = false;
    XYInfo.Caption.clear();
    XYInfo4.Caption.clear();
}

void PatientCurves::NTGraph1_CursorPosition(double x, double y) {
    // Whatever the chart reports, the read-out stays where the operator's gestures can reach.
    NTGraph1.keep_in_bounds(x, y);
    const QChar separator = platform.locale.decimal_separator();
    XYInfo2.Caption = number_text(round_to_places(x, 3), separator) + QLatin1Char('\n') +
                      TimeString(round_to_int32(x)) + QStringLiteral("  ") + message_text(256);
    XYInfo3.Caption = number_text(round_to_places(y, 3), separator);
    double px, py, state;
    NTGraph1.GetTrackInfo(px, py, state);
    const double X = px / 1000;
    const double Y = py / 1000;
    if (round_to_integer(state) == 1) {
        if (!measure_dragging) {
            clear_measurement();
            // Twice the same point: a dot.
            measure_start_element = add_measure_element(0, 4, X, Y, X, Y);
            measure_dragging = true;
        }
        Measured_label.Caption = message_text(252);
        measured_time_label.Caption = message_text(244);
        measured_volume_label.Caption = message_text(245);
        XYInfo.Caption = number_text(round_to_places(x - X, 3), separator);
        XYInfo4.Caption = number_text(round_to_places(y - Y, 3), separator);
        return;
    }
    if (!measure_dragging) return;
    // The button was let go: the line to here, and the end dot.
    measure_line_element = add_measure_element(2, 1, X, Y, x, y);
    measure_end_element = add_measure_element(0, 4, x, y, x, y);
    measure_dragging = false;
    measure_present = true;
}

int16_t PatientCurves::add_measure_element(int16_t type, int16_t width, double x1, double y1,
                                           double x2, double y2) {
    NTGraph1.AddElement();
    NTGraph1.ElementLineColor(measure_grey);
    NTGraph1.ElementLinetype(type);
    NTGraph1.ElementWidth(width);
    element_total = add_i16(element_total, 1, "NTGraph1_CursorPosition");
    NTGraph1.PlotXY(x1, y1, element_total);
    NTGraph1.PlotXY(x2, y2, element_total);
    return element_total;
}

QString PatientCurves::TimeString(int32_t seconds) {
    const long long a = std::llabs(static_cast<long long>(seconds));
    long long h = a / 3600;
    long long m = a / 60 - h * 60;
    const long long s = a % 60;
    if (m == 60) {
        ++h;
        m = 0;
    }
    const QChar point = QLatin1Char('.');
    return QString::fromLatin1(seconds < 0 ? "-" : "") +
           format_number(static_cast<double>(h), "#####0", point) + QLatin1Char(':') +
           format_number(static_cast<double>(m), "00", point) + QLatin1Char('.') +
           format_number(static_cast<double>(s), "00", point);
}

}  // namespace zel
