#include "review/breath_hold_statistics.h"

#include <QFileInfo>

#include "data/file_fault.h"
#include "data/whole_file.h"
#include "language/messages.h"

namespace zel {

BreathHoldStatistics::BreathHoldStatistics(ReviewPlatform platform_, const PatientCurves& review)
    : platform(platform_) {
    Caption = message_text(362);
    cmdCopy.Caption = message_text(380);
    cmdSave.Caption = message_text(381);
    cmdClose.Caption = message_text(382);
    chart_x_label = message_text(365);
    chart_y_label = message_text(166);
    const QChar separator = platform.locale.decimal_separator();
    table.columns = statistics_columns();
    std::vector<HoldSummary> levels;
    for (int c = 0; c < review.curve_count; ++c) {
        const auto k = static_cast<size_t>(c);
        if (k >= review.PatientList.items.size() || !review.PatientList.items[k].checked) continue;
        const CurveInfo& info = review.curve_info[k];
        CurveStatistics figures;
        figures.path = review.curve_paths[k];
        figures.title = review.PatientList.items[k].text;
        figures.session = info.session;
        figures.threshold = info.threshold;
        figures.holds =
            breath_holds({review.curve_time[k], review.curve_volume[k], review.curve_balloon[k],
                          review.curve_switch[k], review.curve_session_time[k], info.threshold,
                          info.count_frequency});
        figures.summary = summarise(figures.holds);
        const int place = static_cast<int>(curves.size());
        add_curve_rows(table, figures, place, separator);
        levels.push_back(figures.summary);
        curves.push_back({figures.title, review.curve_colors[k], info.threshold, figures.holds});
    }
    if (curves.size() >= 2)
        add_between_row(table, StatisticsRowKind::between_curves, spread_of(levels), separator);
}

QString BreathHoldStatistics::copy_text() const { return tab_separated_text(table); }

void BreathHoldStatistics::cmdSave_Click() {
    const QString path =
        platform.dialogs.save_file(message_text(381), QStringLiteral("*.csv"),
                                   message_text(383) + QStringLiteral(" (*.csv)|*.csv"));
    if (path.isEmpty()) return;
    // A curve, patient or settings file is never replaced by a table, whatever name is typed.
    const QFileInfo target(path);
    if (target.exists() &&
        target.suffix().compare(QLatin1String("csv"), Qt::CaseInsensitive) != 0) {
        platform.boxes.MsgBox(message_text(385).arg(path), vbExclamation);
        return;
    }
    if (const Written written = replace_whole_file(path, csv_text(table).toUtf8()); !written)
        platform.boxes.MsgBox(message_text(384).arg(file_fault_text(written.error, written.path)),
                              vbCritical);
}

void BreathHoldStatistics::cmdClose_Click() { unloaded = true; }

}  // namespace zel
