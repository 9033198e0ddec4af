// Choosing curve files, reading them into the window and the list of curves.
#include <algorithm>

#include "app/helpers.h"
#include "app/zel_error.h"
#include "data/curve_file_reader.h"
#include "language/messages.h"
#include "review/patient_curves.h"

namespace zel {

void PatientCurves::multi_select_curve_files_from_disk() {
    try {
        const QStringList parts = platform.dialogs.open_files(
            data_directory, message_text(104), message_text(105) + QStringLiteral(" (*.dat)|*.dat"));
        if (parts.isEmpty()) throw ZelError(err_cancelled, QStringLiteral("cmdDlgCurveFiles"),
                                            QStringLiteral("Cancel was selected."));
        // For several files the first part is their folder; one file is a whole path.
        const int highest = static_cast<int>(parts.size()) - 1;
        const int count = highest > 0 ? highest : 1;
        const int16_t last = add_i16(add_i16(curve_count, -1), count);
        if (last >= 5)
            throw ZelError(err_too_many_curves,
                           QStringLiteral("multi_select_curve_files_from_disk"), QString());
        curve_paths.resize(static_cast<size_t>(last) + 1);
        if (count < 2) {
            curve_paths[curve_count] = parts[0];
        } else {
            for (int k = 0; k < count; ++k)
                curve_paths[curve_count + k] = parts[0] + QLatin1Char('/') + parts[k + 1];
        }
    } catch (const ZelError& e) {
        if (e.number == err_too_many_curves) platform.boxes.MsgBox(message_text(169), vbExclamation);
        // A cancelled dialog and anything else end the choice silently.
    }
}

void PatientCurves::refresh_curves() {
    load_all_curves();
    fill_patient_list();
    apply_list_visibility();
    set_chart_range();
    update_align_choices();
    update_menus();
}

void PatientCurves::load_all_curves() {
    const int count = safe_upper_bound(curve_paths) + 1;
    if (count == 0) return;
    erase_curves();
    clear_chart();
    // The files are read side by side, one to a thread, as reading is most of the load; they
    // are taken up in their order, so that a bad one stops the load at its place. A reading
    // begun before the window was made is taken up where it is one of these files.
    const QChar separator = platform.locale.decimal_separator();
    std::vector<std::future<CurveData>> readings;
    for (int k = 0; k < count; ++k) {
        auto ahead = std::find_if(readings_ahead.begin(), readings_ahead.end(),
                                  [&](const CurveReading& r) {
                                      return r.data.valid() && r.path == curve_paths[k];
                                  });
        if (ahead != readings_ahead.end())
            readings.push_back(std::move(ahead->data));
        else
            readings.push_back(std::move(read_curves({curve_paths[k]}, separator).front().data));
    }
    readings_ahead.clear();
    int i = 0;
    try {
        for (i = 0; i < count; ++i) load_next_curve(readings[static_cast<size_t>(i)]);
    } catch (const ZelError&) {
        // One message for every kind of bad file; the files behind it are dropped.
        platform.boxes.MsgBox(message_text(168) + curve_paths[i], vbCritical);
        curve_paths.resize(curve_count);
        fill_patient_list();
    }
}

std::vector<CurveReading> read_curves(const QStringList& paths, QChar separator) {
    std::vector<CurveReading> readings;
    for (const QString& path : paths)
        readings.push_back({path, std::async(std::launch::async, [path, separator] {
                                CurveData data;
                                LoadCurveData2(path, data, separator);
                                return data;
                            })});
    return readings;
}

void PatientCurves::load_next_curve(std::future<CurveData>& reading) {
    const int n = curve_count;
    const auto size = static_cast<size_t>(n) + 1;
    auto resize_all = [this](size_t to) {
        curve_time.resize(to);
        curve_volume.resize(to);
        curve_balloon.resize(to);
        curve_switch.resize(to);
        curve_session_time.resize(to);
        curve_info.resize(to);
    };
    resize_all(size);
    try {
        CurveData data = reading.get();
        curve_time[n] = std::move(data.time);
        curve_volume[n] = std::move(data.volume);
        curve_balloon[n] = std::move(data.balloon);
        curve_switch[n] = std::move(data.patient_switch);
        curve_session_time[n] = std::move(data.session_time);
        curve_info[n].threshold = data.threshold;
        curve_info[n].count_frequency = data.count_frequency;
        curve_info[n].session = data.session;
        if (default_rate == 1.0) default_rate = curve_info[n].count_frequency;
        plot_curve(n);
    } catch (const ZelError&) {
        resize_all(static_cast<size_t>(curve_count));
        throw;
    }
    curve_count = static_cast<int16_t>(n + 1);
    visible_count = static_cast<int16_t>(n + 1);
}

void PatientCurves::fill_patient_list() {
    if (curve_count <= 0) {
        PatientList.items.clear();
        return;
    }
    for (int i = 0; i <= safe_upper_bound(curve_paths); ++i) {
        const QString name = curve_title_from_path(curve_paths[i]);
        // An entry that stands keeps its check mark through a reload.
        if (i < static_cast<int>(PatientList.items.size()) && PatientList.items[i].text == name)
            continue;
        ListView::Item item{name, i + 1, true};
        if (i <= static_cast<int>(PatientList.items.size()))
            PatientList.items.insert(PatientList.items.begin() + i, item);
        else
            PatientList.items.push_back(item);
    }
}

QString PatientCurves::curve_title_from_path(const QString& path) {
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    if (dot < 0 || slash < 0 || slash >= dot) return {};
    return path.mid(slash + 1, dot - slash - 1);
}

void PatientCurves::erase_curves() {
    curve_time.clear();
    curve_volume.clear();
    curve_balloon.clear();
    curve_switch.clear();
    curve_session_time.clear();
    curve_info.clear();
    curve_count = 0;
}

void PatientCurves::clear_all() {
    clear_chart();
    erase_curves();
    curve_paths.clear();
    default_rate = 1.0;
}

bool PatientCurves::entry_checked(int curve) const {
    return curve >= 0 && curve < static_cast<int>(PatientList.items.size()) &&
           PatientList.items[curve].checked;
}

}  // namespace zel
