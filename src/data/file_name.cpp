#include "data/file_name.h"

namespace zel {

QString with_suffix(const QString& path, const QString& from, const QString& to) {
    if (!path.endsWith(from, Qt::CaseSensitive)) return path + to;
    return path.chopped(from.size()) + to;
}

}  // namespace zel
