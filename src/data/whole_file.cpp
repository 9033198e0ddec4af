#include "data/whole_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringList>

namespace zel {

namespace {

// The rename that puts the new file in place is a change of its folder: synchronising the
// folder makes the replacement itself last through a power loss. A folder that can not be
// opened for it (no read permission) or a file system that does not synchronise folders (some
// network shares) keeps the rename as it stands; only the disk's own failure fails the save.
bool sync_folder(const QString& folder) {
    const int fd =
        ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return true;
    const bool synced = ::fsync(fd) == 0 || errno == EINVAL || errno == ENOTSUP;
    ::close(fd);
    return synced;
}

}  // namespace

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
    // The save file synchronises the new file's bytes with the disk before its rename over the
    // old one, so that a power loss leaves the old file or the new one, never an empty one.
    if (!file.commit()) return false;
    // A folder the disk could not confirm is reported as a failed save.
    return sync_folder(info.absolutePath());
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
