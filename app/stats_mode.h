#pragma once
// zelmoor --stats [--csv] FILE|FOLDER...: breath-hold statistics of recorded curves, for the
// physicist who signs a treatment off. Needs no display and runs beside a console.
#include <QString>
#include <QStringList>

namespace zel {

// Prints the tables to standard output and what could not be read to standard error; returns
// the exit status: 0, or 1 when a file or folder could not be read. The column titles are
// those of the language in force at this site (from `app_data_path`).
int run_stats(const QString& app_data_path, const QStringList& paths, bool csv);

}  // namespace zel
