#include "check_mode.h"

#include <QFileInfo>
#include <cstdio>
#include <thread>

#include "app/release.h"
#include "check/patient_check.h"
#include "data/system_settings_file.h"
#include "language/language_catalogue.h"
#include "language/messages.h"
#include "platform/qt_system.h"

namespace zel {

int run_check(const QString& app_data_path, const QString& folder) {
    if (!QFileInfo(folder).isDir()) {
        std::fprintf(stderr, "zelmoor: %s: not a folder\n", qPrintable(folder));
        return 2;
    }
    // The curve files' first line and the quarantine folder's name are messages of the
    // catalogue: read in the language the console at this site writes them in, as the review.
    const QtLocale locale;
    load_default_messages();
    load_language_in_force(app_data_path, locale.decimal_separator());
    CheckSettings settings;
    settings.patient_parameter_filestamp =
        QString::fromLatin1(release::patient_parameter_filestamp);
    settings.software_version = release::software_version();
    settings.separator = locale.decimal_separator();
    settings.number_format = number_format_of(settings.separator);

    const int threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    const std::vector<PatientCheck> checks =
        check_patient_folders(folder, message_text(342), settings, threads);
    for (const PatientCheck& check : checks)
        for (const QString& line : patient_check_lines(check))
            std::printf("%s\n", line.toLocal8Bit().constData());
    std::printf("%s\n", check_summary(checks).toLocal8Bit().constData());
    return all_load(checks) ? 0 : 1;
}

}  // namespace zel
