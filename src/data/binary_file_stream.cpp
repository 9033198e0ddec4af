#include "data/binary_file_stream.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <cerrno>
#include <cstring>

#include "app/zel_error.h"

namespace zel {

namespace {

constexpr int bad_file_number = 52;

QString source_text() {
    QString program = QCoreApplication::applicationName();
    if (program.isEmpty()) program = QStringLiteral("zelmoor");
    return program + QStringLiteral(".File");
}

[[noreturn]] void raise_file_error(int number) {
    QString description;
    switch (number) {
        case err_file_not_found:
            description = QStringLiteral("File not found");
            break;
        case err_permission_denied:
            description = QStringLiteral("Permission denied");
            break;
        case err_input_past_end:
            description = QStringLiteral("Input past end of file");
            break;
        case bad_file_number:
            description = QStringLiteral("Bad file name or number");
            break;
        default:
            description = QStringLiteral("Path/File access error");
            break;
    }
    throw ZelError(number, source_text(), description);
}

}  // namespace

bool file_exists(const QString& path, int& error_number) {
    error_number = 0;
    struct stat info {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0) {
        if (errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG) {
            error_number = err_file_not_found;
        } else {
            error_number = err_path_file_access;
        }
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        error_number = err_file_not_found;
        return false;
    }
    return true;
}

cBinaryFileStream::~cBinaryFileStream() { Dispose(); }

void cBinaryFileStream::file(const QString& path) {
    Dispose();
    file_name = path;
    int error_number = 0;
    if (!file_exists(path, error_number)) raise_file_error(error_number);

    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) raise_file_error(errno == EACCES ? err_permission_denied : err_path_file_access);
    if (::flock(fd, LOCK_SH | LOCK_NB) != 0) {
        ::close(fd);
        raise_file_error(err_permission_denied);
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0 || info.st_size > INT32_MAX) {
        ::close(fd);
        if (info.st_size > INT32_MAX) raise_overflow("cBinaryFileStream.File");
        raise_file_error(err_path_file_access);
    }
    if (fd > INT16_MAX) {
        ::close(fd);
        raise_overflow("cBinaryFileStream.File");
    }
    // The handle is the descriptor; a valid one is never 0 here, as 0 is standard input.
    descriptor = fd;
    file_number = static_cast<int16_t>(fd);
    file_length = static_cast<int32_t>(info.st_size);
}

void cBinaryFileStream::read_exactly(uint8_t* into, int32_t count) {
    int32_t got = 0;
    while (got < count) {
        const ssize_t n = ::read(descriptor, into + got, static_cast<size_t>(count - got));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) raise_file_error(err_path_file_access);
        // The file shrank under the stream: a read failure, never a guess at its bytes.
        if (n == 0) raise_file_error(err_input_past_end);
        got += static_cast<int32_t>(n);
    }
}

int32_t cBinaryFileStream::Read(std::vector<uint8_t>& buffer, int32_t count) {
    if (count < 0 || static_cast<size_t>(count) > buffer.size())
        throw ZelError(err_subscript, QStringLiteral("cBinaryFileStream.Read"),
                       QStringLiteral("Subscript out of range"));
    const long long end_of_chunk = static_cast<long long>(read_position) + count;
    if (end_of_chunk > INT32_MAX) raise_overflow("cBinaryFileStream.Read");
    int32_t delivered = 0;
    if (end_of_chunk < file_length) {
        if (file_number == 0) raise_file_error(bad_file_number);
        read_exactly(buffer.data(), count);
        delivered = count;
    } else {
        const int32_t remaining = file_length - read_position;
        if (remaining > 0) {
            if (file_number == 0) raise_file_error(bad_file_number);
            // The last part, even a full chunk, goes through an array of its own size.
            std::vector<uint8_t> last_part(static_cast<size_t>(remaining));
            read_exactly(last_part.data(), remaining);
            std::memcpy(buffer.data(), last_part.data(), last_part.size());
        } else {
            Dispose();
        }
        delivered = remaining;
    }
    read_position += delivered;
    return delivered;
}

void cBinaryFileStream::Dispose() {
    if (file_number != 0) {
        ::close(descriptor);
        descriptor = -1;
    }
    file_number = 0;
}

}  // namespace zel
