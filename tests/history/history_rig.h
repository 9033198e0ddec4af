#pragma once
// The session history window of the patient Doe, Jane, A1 over fakes, with the patient's
// "session.ini" written by the test as the console writes it.
#include <QByteArray>
#include <QString>
#include <vector>

#include "fakes/fake_printer.h"
#include "fakes/rig.h"
#include "history/dialog_session_history.h"

namespace zel::test {

// One session's values as they stand in the file, blanks of printed numbers included.
struct StoredSession {
    QByteArray id, date, threshold, duration, trigger, breath_holds, gating_mode;
};

struct HistoryRig : Rig {
    HistoryRig();
    QString path() const;
    // The file with "TOTAL_SESSIONS" = total and these sections, numbered from 1.
    void write_history(int total, const std::vector<StoredSession>& sessions);
    void write_file(const QByteArray& contents);
    // The rows as the window shows them: the item's text and its six sub-items.
    std::vector<std::vector<QString>> rows() const;

    FakePrinter printer;
    DialogSessionHistory history{form, printer};
};

}  // namespace zel::test
