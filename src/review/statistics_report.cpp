#include "review/statistics_report.h"

#include <QFileInfo>

#include "app/zel_error.h"
#include "review/hold_statistics.h"
#include "review/statistics_table.h"

namespace zel {

StatisticsReport statistics_report(const QStringList& paths, bool csv, QChar separator,
                                   int threads) {
    StatisticsReport report;
    auto failed = [&](const QString& path, const QString& reason) {
        report.err +=
            QStringLiteral("zelmoor: ") + path + QStringLiteral(": ") + reason + QLatin1Char('\n');
        report.status = 1;
    };
    StatisticsTable all;
    all.columns = statistics_columns();
    for (const QString& path : paths) {
        StatisticsTable table;
        table.columns = all.columns;
        const QFileInfo info(path);
        if (info.isDir()) {
            const PatientStatistics patient = patient_statistics(path, separator, threads);
            for (const StatisticsFailure& f : patient.failures) failed(f.path, f.reason);
            if (patient.curves.empty()) {
                if (patient.failures.empty())
                    failed(path, QStringLiteral("no curve files (*.dat) in this folder"));
                continue;
            }
            add_patient_rows(table, patient, separator);
        } else if (info.exists()) {
            try {
                add_curve_rows(table, read_curve_statistics(path, separator), -1, separator);
            } catch (const ZelError& e) {
                failed(path, e.description + QStringLiteral(" (") + QString::number(e.number) +
                                 QLatin1Char(')'));
                continue;
            }
        } else {
            failed(path, QStringLiteral("no such file or folder"));
            continue;
        }
        if (csv) {
            all.rows.insert(all.rows.end(), table.rows.begin(), table.rows.end());
        } else {
            if (!report.out.isEmpty()) report.out += QLatin1Char('\n');
            report.out += path + QLatin1Char('\n') + aligned_text(table);
        }
    }
    if (csv) report.out = csv_text(all);
    return report;
}

}  // namespace zel
