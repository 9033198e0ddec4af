#include "data/file_fault.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "app/zel_error.h"

namespace zel {

int file_fault_number(int error) {
    switch (error) {
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return err_disk_full;
        case EACCES:
        case EPERM:
        case EROFS:
            return err_permission_denied;
        case ENOENT:
        case ENOTDIR:
        case EEXIST:
        case ESTALE:
            return err_path_not_found;
        case EISDIR:
        case ENAMETOOLONG:
        case ELOOP:
        case EINVAL:
            return err_path_file_access;
        default:
            return err_device_io;
    }
}

QString file_fault_text(int error, const QString& path) {
    QString name;
    switch (file_fault_number(error)) {
        case err_disk_full: name = QStringLiteral("Disk full"); break;
        case err_permission_denied: name = QStringLiteral("Permission denied"); break;
        case err_path_not_found: name = QStringLiteral("Path not found"); break;
        case err_path_file_access: name = QStringLiteral("Path/File access error"); break;
        default: name = QStringLiteral("Device I/O error"); break;
    }
    return name + QStringLiteral(": ") + QString::fromLocal8Bit(std::strerror(error)) +
           QStringLiteral(": ") + path;
}

void raise_file_fault(int error, const char* source, const QString& path) {
    throw ZelError(file_fault_number(error), QString::fromLatin1(source),
                   file_fault_text(error, path));
}

void log_file_fault(int error, const char* source, const QString& path) {
    std::fprintf(stderr, "zelmoor: %s: %s\n", source, qPrintable(file_fault_text(error, path)));
}

}  // namespace zel
