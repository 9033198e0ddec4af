#include "data/whole_file.h"

#include <QFileInfo>
#include <QSaveFile>
#include <QStringList>

namespace zel {

bool replace_whole_file(const QString& path, const QByteArray& bytes) {
    const QFileInfo info(path);
    if (info.exists() && (info.isDir() || !(info.permissions() & QFileDevice::WriteOwner)))
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    if (file.write(bytes) != bytes.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

bool latin1_lines(const QStringList& lines, QByteArray& bytes) {
    bytes.clear();
    for (const QString& line : lines) {
        for (QChar ch : line)
            if (ch.unicode() > 0xFF) return false;
        bytes += line.toLatin1();
        bytes += "\r\n";
    }
    return true;
}

}  // namespace zel
