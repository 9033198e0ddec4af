#pragma once
// Names of the files that go with another: a patient file's companion, a language file's
// companion, a recording stamped with its moment. Only the name's ending changes; a folder
// whose name holds ".zel" or ".dat" is an ordinary folder.
#include <QString>

namespace zel {

// `path` with its ending `from` (exactly, case-sensitively) replaced by `to`. A path that does
// not end in `from` gets `to` behind it, so that the result is never the path itself.
QString with_suffix(const QString& path, const QString& from, const QString& to);

}  // namespace zel
