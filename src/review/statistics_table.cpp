#include "review/statistics_table.h"

#include <algorithm>
#include <cmath>

#include "language/messages.h"

namespace zel {

namespace {

// Messages of the column titles, in order, and of the summary rows.
constexpr int first_column_message = 363;
constexpr int column_count = 13;
constexpr int per_curve_message = 376, per_session_message = 377;
constexpr int between_curves_message = 378, between_sessions_message = 379;
// Columns that hold text; the others hold numbers.
constexpr int text_columns = 3;

QString number(double value, int decimals, QChar separator) {
    if (!std::isfinite(value)) return {};
    QString text = QString::number(value, 'f', decimals);
    // A value that rounds to nothing carries no sign.
    if (text.startsWith(QLatin1Char('-')) &&
        std::all_of(text.begin() + 1, text.end(), [](QChar c) { return c == u'0' || c == u'.'; }))
        text.remove(0, 1);
    return text.replace(QLatin1Char('.'), separator);
}

QString litres(double value, QChar separator) { return number(value, 3, separator); }
QString seconds(double value, QChar separator) { return number(value, 2, separator); }

StatisticsRow summary_row(StatisticsRowKind kind, int curve, const QString& title,
                          const QString& session, int label, const HoldSummary& s,
                          QChar separator) {
    return {kind,
            curve,
            {title, session, message_text(label), QString::number(s.holds), QString(),
             seconds(s.mean_length, separator), litres(s.mean_level, separator),
             litres(s.level_sd, separator), litres(s.min, separator), litres(s.max, separator),
             litres(s.largest_drift, separator), litres(s.from_threshold, separator),
             QString::number(s.frames_lost)}};
}

void add_holds(StatisticsTable& table, const CurveStatistics& curve, int curve_index,
               QChar separator) {
    for (const HoldFigures& h : curve.holds)
        table.rows.push_back(
            {StatisticsRowKind::hold,
             curve_index,
             {curve.title, curve.session, QString::number(h.number), QString(),
              seconds(h.start, separator), seconds(h.length, separator), litres(h.mean, separator),
              litres(h.sd, separator), litres(h.min, separator), litres(h.max, separator),
              litres(h.drift, separator), litres(h.from_threshold, separator),
              QString::number(h.frames_lost)}});
}

}  // namespace

QStringList statistics_columns() {
    QStringList columns;
    for (int k = 0; k < column_count; ++k) columns.append(message_text(first_column_message + k));
    return columns;
}

void add_curve_rows(StatisticsTable& table, const CurveStatistics& curve, int curve_index,
                    QChar separator) {
    if (table.columns.isEmpty()) table.columns = statistics_columns();
    add_holds(table, curve, curve_index, separator);
    table.rows.push_back(summary_row(StatisticsRowKind::per_curve, curve_index, curve.title,
                                     curve.session, per_curve_message, curve.summary, separator));
}

void add_between_row(StatisticsTable& table, StatisticsRowKind kind, const LevelSpread& spread,
                     QChar separator) {
    if (table.columns.isEmpty()) table.columns = statistics_columns();
    const int label = kind == StatisticsRowKind::between_sessions ? between_sessions_message
                                                                  : between_curves_message;
    QStringList cells;
    for (int k = 0; k < column_count; ++k) cells.append(QString());
    cells[2] = message_text(label);
    cells[3] = QString::number(spread.holds);
    cells[6] = litres(spread.mean_level, separator);
    cells[7] = litres(spread.level_sd, separator);
    table.rows.push_back({kind, -1, cells});
}

void add_patient_rows(StatisticsTable& table, const PatientStatistics& patient, QChar separator) {
    if (table.columns.isEmpty()) table.columns = statistics_columns();
    for (const SessionStatistics& session : patient.sessions) {
        for (size_t k : session.curves) add_holds(table, patient.curves[k], -1, separator);
        table.rows.push_back(summary_row(StatisticsRowKind::per_session, -1, QString(),
                                         session.session, per_session_message, session.summary,
                                         separator));
    }
    add_between_row(table, StatisticsRowKind::between_sessions, patient.between_sessions,
                    separator);
}

QString aligned_text(const StatisticsTable& table, bool with_titles) {
    std::vector<qsizetype> widths(static_cast<size_t>(table.columns.size()), 0);
    auto measure = [&](const QStringList& cells) {
        for (qsizetype k = 0; k < cells.size() && k < table.columns.size(); ++k)
            widths[static_cast<size_t>(k)] =
                std::max(widths[static_cast<size_t>(k)], cells[k].size());
    };
    if (with_titles) measure(table.columns);
    for (const StatisticsRow& row : table.rows) measure(row.cells);
    QString text;
    auto line = [&](const QStringList& cells) {
        QString out;
        for (qsizetype k = 0; k < table.columns.size(); ++k) {
            const QString cell = k < cells.size() ? cells[k] : QString();
            const auto width = widths[static_cast<size_t>(k)];
            if (k > 0) out += QStringLiteral("  ");
            out += k < text_columns ? cell.leftJustified(width) : cell.rightJustified(width);
        }
        // No blanks at the end of a line.
        while (out.endsWith(QLatin1Char(' '))) out.chop(1);
        text += out + QLatin1Char('\n');
    };
    if (with_titles) line(table.columns);
    for (const StatisticsRow& row : table.rows) line(row.cells);
    return text;
}

QString csv_text(const StatisticsTable& table, bool with_titles) {
    QString text;
    auto line = [&](const QStringList& cells) {
        QStringList quoted;
        for (const QString& cell : cells) {
            if (cell.contains(QLatin1Char(',')) || cell.contains(QLatin1Char('"')) ||
                cell.contains(QLatin1Char('\r')) || cell.contains(QLatin1Char('\n'))) {
                QString q = cell;
                q.replace(QLatin1String("\""), QLatin1String("\"\""));
                quoted.append(QLatin1Char('"') + q + QLatin1Char('"'));
            } else {
                quoted.append(cell);
            }
        }
        text += quoted.join(QLatin1Char(',')) + QStringLiteral("\r\n");
    };
    if (with_titles) line(table.columns);
    for (const StatisticsRow& row : table.rows) line(row.cells);
    return text;
}

QString tab_separated_text(const StatisticsTable& table) {
    QString text;
    auto line = [&](QStringList cells) {
        for (QString& cell : cells) cell.replace(QLatin1Char('\t'), QLatin1Char(' '));
        text += cells.join(QLatin1Char('\t')) + QLatin1Char('\n');
    };
    line(table.columns);
    for (const StatisticsRow& row : table.rows) line(row.cells);
    return text;
}

}  // namespace zel
