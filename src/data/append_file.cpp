#include "data/append_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>

#include "data/file_fault.h"

namespace zel {

AppendFile::AppendFile(QString path, const char* source_)
    : source(source_), file_path(std::move(path)), native_path(QFile::encodeName(file_path)) {}

AppendFile::~AppendFile() {
    if (fd >= 0) ::close(fd);
}

void AppendFile::fail(int error) { raise_file_fault(error, source, file_path); }

void AppendFile::open(Start start) {
    if (fd >= 0) return;
    const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (start == Start::anew ? O_TRUNC : O_APPEND);
    const int opened = ::open(native_path.constData(), flags, 0666);
    if (opened < 0) fail(errno);
    struct stat info {};
    if (::fstat(opened, &info) != 0) {
        const int error = errno;
        ::close(opened);
        fail(error);
    }
    fd = opened;
    length = info.st_size;
    device = info.st_dev;
    inode = info.st_ino;
}

void AppendFile::append(const QByteArray& bytes) {
    if (fd < 0) fail(EBADF);
    const char* data = bytes.constData();
    qsizetype left = bytes.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, data, static_cast<size_t>(left));
        if (written < 0) {
            if (errno == EINTR) continue;
            const int error = errno;
            // What reached the file of this piece is taken back, where the system lets it.
            if (left != bytes.size()) static_cast<void>(::ftruncate(fd, length) == 0);
            fail(error);
        }
        data += written;
        left -= written;
    }
    length += bytes.size();
    check_still_in_place();
}

void AppendFile::check_still_in_place() {
    struct stat info {};
    if (::stat(native_path.constData(), &info) != 0) fail(errno == ENOTDIR ? ENOENT : errno);
    if (info.st_dev != device || info.st_ino != inode) fail(ENOENT);
}

void AppendFile::close() {
    if (fd < 0) return;
    const int closing = fd;
    fd = -1;
    // A share may report a write that failed on its way to the disk only at the close.
    if (::close(closing) != 0 && errno != EINTR) fail(errno);
}

}  // namespace zel
