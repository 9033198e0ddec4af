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
#include "data/file_fault.h"

namespace zel {

namespace {

QString source_text() {
    QString program = QCoreApplication::applicationName();
    if (program.isEmpty()) program = QStringLiteral("zelmoor");
    return program + QStringLiteral(".File");
}

[[noreturn]] void raise_file_error(int number, const QString& description) {
    throw ZelError(number, source_text(), description);
}

// A failure of the system, numbered and worded as every file operation of the console has it.
[[noreturn]] void raise_system_error(int error, const QString& path) {
    raise_file_error(file_fault_number(error), file_fault_text(error, path));
}

// The directory query: 0 when `path` names a normal file, otherwise the errno of the failure,
// ENOENT for a name that is no file (a folder counts as absent).
int query_file(const QByteArray& native) {
    struct stat info {};
    if (::stat(native.constData(), &info) != 0)
        return errno == ENOTDIR || errno == ENAMETOOLONG ? ENOENT : errno;
    return S_ISREG(info.st_mode) ? 0 : ENOENT;
}

}  // namespace

bool file_exists(const QString& path, int& error_number) {
    const int error = query_file(QFile::encodeName(path));
    error_number = error == 0        ? 0
                   : error == ENOENT ? int(err_file_not_found)
                                     : file_fault_number(error);
    return error == 0;
}

cBinaryFileStream::~cBinaryFileStream() { Dispose(); }

void cBinaryFileStream::file(const QString& path) {
    Dispose();
    file_name = path;
    const QByteArray native = QFile::encodeName(path);
    if (const int error = query_file(native)) {
        if (error == ENOENT) raise_file_error(err_file_not_found, QStringLiteral("File not found"));
        raise_system_error(error, path);
    }

    const int fd = ::open(native.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) raise_system_error(errno, path);
    // Another program writing the file holds it: the sharing of the file is refused.
    if (::flock(fd, LOCK_SH | LOCK_NB) != 0) {
        ::close(fd);
        raise_file_error(err_permission_denied, QStringLiteral("Permission denied"));
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0 || info.st_size > INT32_MAX) {
        const int error = errno;
        ::close(fd);
        if (info.st_size > INT32_MAX) raise_overflow("cBinaryFileStream.File");
        raise_system_error(error, path);
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
        if (n < 0) raise_system_error(errno, file_name);
        // The file shrank under the stream: a read failure, never a guess at its bytes.
        if (n == 0) raise_file_error(err_input_past_end, QStringLiteral("Input past end of file"));
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
        if (file_number == 0)
            raise_file_error(err_bad_file_number, QStringLiteral("Bad file name or number"));
        read_exactly(buffer.data(), count);
        delivered = count;
    } else {
        const int32_t remaining = file_length - read_position;
        if (remaining > 0) {
            if (file_number == 0)
                raise_file_error(err_bad_file_number, QStringLiteral("Bad file name or number"));
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
