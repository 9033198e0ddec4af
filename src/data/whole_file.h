#pragma once
// Files that are replaced whole are written to a temporary file beside them and renamed over
// the old one, so that a crash leaves the old file or the new one, never half of one.
#include <QByteArray>
#include <QString>
#include <QStringList>

namespace zel {

// False when the file can't be written: its folder is missing or closed to writing, or an
// existing file is read-only (its owner may not write it), as creating it anew would fail.
bool replace_whole_file(const QString& path, const QByteArray& bytes);

// Text as the console's files hold it: Latin-1, each line ended by CR LF. False when a
// character has no Latin-1 code, so that nothing is written that would read back otherwise.
bool latin1_lines(const QStringList& lines, QByteArray& bytes);

}  // namespace zel
