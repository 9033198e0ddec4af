#include "data/file_access.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>

namespace zel {

mode_t tighten_umask() {
    const mode_t before = ::umask(S_IRWXO);
    ::umask(before | S_IRWXO);
    return before;
}

int write_all(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(fd, data, size);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return errno;
        if (written == 0) return EIO;
        data += written;
        size -= static_cast<size_t>(written);
    }
    return 0;
}

int make_folder(const QString& path) {
    return ::mkdir(QFile::encodeName(path).constData(), folder_creation_mode) == 0 ? 0 : errno;
}

int make_folders(const QString& path) {
    const QFileInfo info(path);
    if (info.isDir()) return 0;
    const QString parent = info.absolutePath();
    if (parent != info.absoluteFilePath()) {
        if (const int error = make_folders(parent)) return error;
    }
    const int error = make_folder(path);
    // Made meanwhile by another program: what is asked for stands.
    return error == EEXIST && QFileInfo(path).isDir() ? 0 : error;
}

bool read_only_file(const QString& path) {
    const QFileInfo info(path);
    return info.exists() && !info.isDir() && !(info.permissions() & QFileDevice::WriteOwner);
}

bool make_writable(const QString& path, QFileDevice::Permissions extra) {
    const QFileDevice::Permissions permissions = QFile::permissions(path);
    const QFileDevice::Permissions wanted = permissions | QFileDevice::WriteOwner | extra;
    return wanted == permissions || QFile::setPermissions(path, wanted);
}

bool make_read_only(const QString& path) {
    return QFile::setPermissions(
        path, QFile::permissions(path) & ~(QFileDevice::WriteOwner | QFileDevice::WriteUser |
                                           QFileDevice::WriteGroup | QFileDevice::WriteOther));
}

}  // namespace zel
