#pragma once
// The breath-hold statistics as one table, the same rows wherever they are shown: the review's
// statistics window, its copy and its CSV file, and `zelmoor --stats`. Column titles and the
// names of the summary rows come from the message catalogue; numbers are in the machine's form,
// volumes to the millilitre and times to the hundredth of a second; a figure that does not
// exist (a spread of one value) is an empty cell.
#include <QChar>
#include <QString>
#include <QStringList>
#include <vector>

#include "review/hold_statistics.h"

namespace zel {

enum class StatisticsRowKind { hold, per_curve, per_session, between_curves, between_sessions };

struct StatisticsRow {
    StatisticsRowKind kind = StatisticsRowKind::hold;
    int curve = -1;  // the curve the row belongs to, by its place in the window; -1 across curves
    QStringList cells;  // one per column
};

struct StatisticsTable {
    QStringList columns;
    std::vector<StatisticsRow> rows;
};

// Curve, Session, Hold, Holds, Start, Length, Mean, SD, Min, Max, Drift, Mean - threshold,
// Frames lost.
QStringList statistics_columns();

// A curve's holds, then its summary row ("Per curve").
void add_curve_rows(StatisticsTable& table, const CurveStatistics& curve, int curve_index,
                    QChar separator);
// Across curves or sessions: the holds counted, the mean of the levels and their spread.
void add_between_row(StatisticsTable& table, StatisticsRowKind kind, const LevelSpread& spread,
                     QChar separator);
// A patient's folder: each session's holds and its summary row ("Per session"), then the
// spread between sessions.
void add_patient_rows(StatisticsTable& table, const PatientStatistics& patient, QChar separator);

// For reading: columns padded to their widest cell, numbers to the right; lines end in LF.
QString aligned_text(const StatisticsTable& table, bool with_titles = true);
// RFC 4180: cells with a comma, a quote or a line end in quotes; lines end in CR LF.
QString csv_text(const StatisticsTable& table, bool with_titles = true);
// For the clipboard: cells between tabs, lines ended by LF.
QString tab_separated_text(const StatisticsTable& table);

}  // namespace zel
