#include "stats_mode.h"

#include <cstdio>
#include <thread>

#include "language/language_catalogue.h"
#include "language/messages.h"
#include "platform/qt_system.h"
#include "review/statistics_report.h"

namespace zel {

int run_stats(const QString& app_data_path, const QStringList& paths, bool csv) {
    // The curve files' first line is a message of the catalogue: read in the language the
    // console at this site writes them in, as the review and the check read them.
    const QtLocale locale;
    load_default_messages();
    load_language_in_force(app_data_path, locale.decimal_separator());
    const int threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    const StatisticsReport report =
        statistics_report(paths, csv, locale.decimal_separator(), threads);
    std::fputs(report.out.toLocal8Bit().constData(), stdout);
    std::fflush(stdout);
    std::fputs(report.err.toLocal8Bit().constData(), stderr);
    return report.status;
}

}  // namespace zel
