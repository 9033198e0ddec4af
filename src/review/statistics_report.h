#pragma once
// zelmoor --stats: the breath-hold statistics of the curve files and patient folders named on
// the command line, for reading or as CSV.
#include <QChar>
#include <QString>
#include <QStringList>

namespace zel {

struct StatisticsReport {
    QString out;     // the tables
    QString err;     // "zelmoor: PATH: REASON" for each file that can't be read
    int status = 0;  // 1 when a file or folder could not be read, 0 otherwise
};

// A file is one curve: its holds and its summary. A folder is a patient: every curve file in
// it, by session, and the spread between sessions. As text each path has its own table under
// its name; as CSV all rows follow one line of titles. Folders are read on `threads` threads.
StatisticsReport statistics_report(const QStringList& paths, bool csv, QChar separator,
                                   int threads);

}  // namespace zel
