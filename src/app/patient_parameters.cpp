// The parameter file of the patient in force: saved whole after every change of the course's
// settings, and read back through its tests when a patient is loaded.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <utility>

#include "app/form1.h"
#include "data/file_fault.h"
#include "data/patient_file.h"
#include "data/quarantine.h"
#include "language/messages.h"

namespace zel {

namespace {

// A patient whose first save failed was never stored: the folder the new-patient dialog made
// for it goes again, with what the failed save left in it, so that no folder stands without
// its patient file and the patient can be created anew. Anything else in it keeps it. True
// when the folder went.
bool remove_unsaved_patient_folder(const QString& folder, const QString& zel_path) {
    const QStringList own = {QFileInfo(zel_path).fileName(),
                             QFileInfo(companion_path(zel_path)).fileName()};
    const QStringList entries = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden |
                                                       QDir::System | QDir::NoDotAndDotDot);
    for (const QString& name : entries)
        if (!own.contains(name)) return false;
    for (const QString& name : entries) QFile::remove(folder + QLatin1Char('/') + name);
    return QDir().rmdir(folder);
}

}  // namespace

void Form1::save_patient_parameters() {
    const PatientParameters parameters{patient_last_name, patient_first_name, patient_medical_id,
                                       thresh,            duration,           max_y,
                                       inhale,            x_scale_factor,     max_x,
                                       Gated_Treatment};
    const QString path =
        patient_file_path(data_directory, patient_last_name, patient_first_name, patient_medical_id);
    const QStringList lines = patient_file_lines(
        patient_parameter_filestamp, software_version, parameters,
        platform.locale.medium_date(platform.clock.now().date()), number_format,
        platform.locale.decimal_separator());
    const Written written = write_patient_files(path, lines);
    // Only the first save after the new-patient dialog may take the folder away again.
    const QString made_folder = form5 ? std::exchange(form5->made_folder, QString()) : QString();
    if (!written) {
        log_file_fault(written.error, "save_patient_parameters", written.path);
        const bool never_stored =
            !made_folder.isEmpty() &&
            QDir::cleanPath(made_folder) == QDir::cleanPath(QFileInfo(path).path()) &&
            remove_unsaved_patient_folder(made_folder, path);
        stop_module_link();
        platform.boxes.MsgBox(message_text(142), vbExclamation);
        start_module_search();
        // Without its folder the patient could be neither recorded nor saved: it is undone,
        // and the operator creates it again once the disk takes it.
        if (never_stored) reset_patient();
    }
}

bool Form1::read_patient_parameter_file() {
    QDir::setCurrent(data_directory);
    const PatientFileReading reading = read_patient_file(
        patient_parameter_filename, patient_parameter_filestamp, software_version, number_format);
    switch (reading.verdict) {
        case PatientFileVerdict::corrupt:
        case PatientFileVerdict::wrong_version:
            quarantine_patient(patient_parameter_filename, message_text(342), data_directory);
            QDir::setCurrent(data_directory);
            start_module_search();
            if (reading.verdict == PatientFileVerdict::corrupt)
                show_patient_file_message(Window::Form_CorruptInfo, {message_text(296)});
            else
                show_patient_file_message(Window::Form_WrongVersion, {message_text(195)});
            return false;
        case PatientFileVerdict::not_a_patient_file:
            // The link is already stopped for the file dialog.
            platform.boxes.MsgBox(message_text(128), vbExclamation);
            start_module_search();
            return false;
        case PatientFileVerdict::number_format_differs:
            found_number_format = reading.found_number_format;
            start_module_search();
            show_patient_file_message(
                Window::Form_NumberFormatWarning,
                {message_text(343), message_text(345) + QLatin1Char(' ') + number_format,
                 message_text(344) + QLatin1Char(' ') + found_number_format});
            return false;
        case PatientFileVerdict::accepted: break;
    }
    const PatientHolding& held = reading.holding;
    found_number_format = reading.found_number_format;
    temp_patient_last_name = held.last_name;
    temp_patient_first_name = held.first_name;
    temp_patient_medical_id = held.medical_id;
    temp_thresh = held.thresh;
    temp_duration = held.duration;
    temp_max_y = held.max_y;
    temp_trigger = held.trigger;
    temp_gating = held.gating;
    temp_x_scale_factor = held.x_scale_factor;
    temp_max_x = held.max_x;
    return true;
}

void Form1::take_over_holding_area() {
    inhale = temp_trigger == QLatin1String("True");
    duration = temp_duration;
    thresh = temp_thresh;
    max_y = temp_max_y;
    min_y = -max_y;
    x_scale_factor = temp_x_scale_factor;
    max_x = temp_max_x;
    Gated_Treatment = temp_gating == QLatin1String("True");
}

void Form1::show_patient_file_message(Window window, const QStringList& texts) {
    platform.windows.show_message(window, message_text(108), texts, {message_text(293)});
}

}  // namespace zel
