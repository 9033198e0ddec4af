// The system settings files "zel.ini" and "datapath.ini", and the number format.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>

#include "app/form1.h"
#include "data/file_fault.h"
#include "data/profile_file.h"
#include "data/system_settings_file.h"
#include "data/whole_file.h"
#include "language/messages.h"

namespace zel {

namespace {

QString settings_path(const QString& app_data_path) {
    return app_data_path + QStringLiteral("/zel.ini");
}

QString data_path_file(const QString& app_data_path) {
    return app_data_path + QStringLiteral("/datapath.ini");
}

const QString data_path_section = QStringLiteral("ZEL");
const QString data_path_key = QStringLiteral("DataPath");

// Opens a text file for reading: 76 when its folder is missing, 53 when the file is.
void open_for_input(QFile& file) {
    const QFileInfo info(file.fileName());
    if (!info.dir().exists())
        throw ZelError(err_path_not_found, QStringLiteral("load_system_settings"),
                       QStringLiteral("Path not found"));
    if (!info.exists())
        throw ZelError(err_file_not_found, QStringLiteral("load_system_settings"),
                       QStringLiteral("File not found"));
    if (info.isDir() || !file.open(QIODevice::ReadOnly))
        throw ZelError(err_path_file_access, QStringLiteral("load_system_settings"),
                       QStringLiteral("Path/File access error"));
}

// The texts shown before the catalogue is loaded, so fixed and in English.
struct SettingsFailure {
    int number;
    const char* text;
    int style;
};
const SettingsFailure settings_failures[] = {
    {err_number_format_differs,
     "ZEL default number format does not match current Windows regional settings. Loading "
     "default system parameters.",
     vbOKOnly},
    {err_incompatible_settings,
     "ZEL System Initialization File is not compatible with the current software version. "
     "Loading default system parameters.",
     vbOKOnly},
    {err_file_not_found,
     "ZEL System Initialization file is not found. Save default parameters through the "
     "File->Save System Settings menu.",
     vbOKOnly},
    {err_path_not_found,
     "ZEL patient data directory not setup up correctly. Please exit and refer to the ZEL User "
     "Manual before continuing.",
     vbExclamation},
};

}  // namespace

QString language_named_in_settings(const QString& app_data_path, QChar separator) {
    SystemSettings settings;
    try {
        QFile file(settings_path(app_data_path));
        open_for_input(file);
        read_system_settings(file, SettingsState{}.system_parameter_filestamp,
                             number_format_of(separator), settings);
        return settings.language_file;
    } catch (const ZelError&) {
        // The console loads its defaults then, and with them English.
        return SystemSettings{}.language_file;
    }
}

void Form1::detect_number_format() {
    number_format = number_format_of(platform.locale.decimal_separator());
}

void Form1::apply_system_settings(const SystemSettings& settings) {
    inhale = settings.inhale;
    duration = settings.duration;
    max_x = settings.max_x;
    max_y = settings.max_y;
    min_y = settings.min_y;
    x_scale_factor = settings.x_scale_factor;
    thresh = settings.thresh;
    language_file = settings.language_file;
}

void Form1::load_default_system_settings() {
    apply_system_settings(SystemSettings{});
    min_x = 0;
}

void Form1::load_system_settings() {
    SystemSettings settings{inhale, duration,      max_x,
                            max_y,  min_y,         x_scale_factor,
                            thresh, language_file, found_number_format};
    int number = 0;
    try {
        QFile file(settings_path(AppDataPath));
        open_for_input(file);
        read_system_settings(file, system_parameter_filestamp, number_format, settings);
        apply_system_settings(settings);
        found_number_format = settings.found_number_format;
        return;
    } catch (const ZelError& e) {
        number = e.number;
        found_number_format = settings.found_number_format;
    }
    for (const SettingsFailure& failure : settings_failures) {
        if (failure.number != number) continue;
        stop_module_link();
        platform.boxes.MsgBox(QString::fromLatin1(failure.text), failure.style);
        start_module_search();
    }
    load_default_system_settings();
}

void Form1::save_ini_file() {
    const SystemSettings settings{inhale, duration,      max_x,
                                  max_y,  min_y,         x_scale_factor,
                                  thresh, language_file, found_number_format};
    const QString path = settings_path(AppDataPath);
    QByteArray bytes;
    const Written written =
        latin1_lines(system_settings_lines(system_parameter_filestamp, settings, number_format,
                                           platform.locale.decimal_separator()),
                     bytes)
            ? replace_whole_file(path, bytes)
            : Written{EILSEQ, path};
    if (!written) {
        log_file_fault(written.error, "save_ini_file", written.path);
        stop_module_link();
        platform.boxes.MsgBox(message_text(142), vbExclamation);
        start_module_search();
    }
}

QString Form1::read_data_path() {
    const QString path = read_profile_string(data_path_file(AppDataPath), data_path_section,
                                             data_path_key, QString(), profile_buffer_size);
    if (path.isEmpty() || !QFileInfo(path).isDir()) return QString();
    return path;
}

bool Form1::write_data_path(QString& path) {
    const Written written =
        write_profile_string(data_path_file(AppDataPath), data_path_section, data_path_key, path);
    if (!written) log_file_fault(written.error, "write_data_path", written.path);
    return written;
}

QString Form1::Select_patient_datapath() {
    const QString chosen =
        platform.dialogs.browse_for_folder(QStringLiteral("Select Patient Data Path"));
    const qsizetype nul = chosen.indexOf(QChar(0));
    return nul < 0 ? chosen : chosen.left(nul);
}

}  // namespace zel
