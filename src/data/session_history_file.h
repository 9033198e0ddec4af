#pragma once
// A patient's history of treatment sessions, "session.ini": a "HEADER" section with the count
// and one section per session, numbered from 1 behind a row of stars.
#include <QString>
#include <cstdint>

#include "data/profile_file.h"

namespace zel {

// "<data_directory>/<last>_<first>_<id>/session.ini".
QString sessionfile(const QString& data_directory, const QString& last, const QString& first,
                    const QString& id);

// The section of the n-th session.
QString session_section(int n);

// "TOTAL_SESSIONS" of the file; 0 when the file or the key is missing or the value empty.
// A value that is not a 16-bit number fails (13, 6).
int16_t read_total_sessions(const QString& path);

// "ID" of the n-th session; empty when the section or key is missing.
QString read_session_id(const QString& path, int n);
// The same from the file's index.
QString session_id(const ProfileIndex& history, int n);

// The values of one entry as they are written.
struct SessionEntry {
    QString id;
    QString date;
    QString threshold;
    QString duration;
    QString trigger;
    QString breath_holds;
    QString gating_mode;
};

// Writes the entry of `session` to the file. A session saved before into the same file
// (`session_id_saved` holds the file's path followed by the session) replaces its own section;
// any other adds one. A section whose keys could not all be written is taken out again. On
// success `session_id_saved` takes the new key. A count that doesn't read as a 16-bit number,
// or one that a new entry would take beyond it, fails (13, 6) with the file untouched; a file
// that can't be read or written fails with what failed.
Written write_session_entry(const QString& path, const QString& session, const SessionEntry& entry,
                            QString& session_id_saved);

// A session id that reads as a number in the system's form, with its value.
bool numeric_session_id(const QString& text, QChar separator, double& value);

}  // namespace zel
