#include "data/whole_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <cerrno>

namespace zel {

namespace {

// A temporary file is the file's name, ".new-" and six letters or digits. One that a crash
// left behind is removed at the next save of the same file.
const QString temporary_mark = QStringLiteral(".new-");
constexpr int temporary_letters = 6;

QByteArray native(const QString& path) { return QFile::encodeName(path); }

void remove_left_behind(const QString& path) {
    const QFileInfo info(path);
    const QByteArray prefix = native(info.fileName() + temporary_mark);
    DIR* folder = ::opendir(native(info.absolutePath()).constData());
    if (folder == nullptr) return;
    const QByteArray folder_path = native(info.absolutePath()) + '/';
    while (const dirent* entry = ::readdir(folder)) {
        const QByteArray name(entry->d_name);
        if (name.size() == prefix.size() + temporary_letters && name.startsWith(prefix))
            ::unlink((folder_path + name).constData());
    }
    ::closedir(folder);
}

int create_temporary(const QString& path, QString& temporary) {
    for (int attempt = 0; attempt < 100; ++attempt) {
        const QString name = temporary_name(path);
        const int fd = ::open(native(name).constData(),
                              O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0 || errno != EEXIST) {
            temporary = name;
            return fd;
        }
    }
    errno = EEXIST;
    return -1;
}

bool write_all(int fd, const QByteArray& bytes) {
    const char* data = bytes.constData();
    qsizetype left = bytes.size();
    while (left > 0) {
        const ssize_t written = ::write(fd, data, static_cast<size_t>(left));
        if (written < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        data += written;
        left -= written;
    }
    return true;
}

// The rename that puts the new file in place is a change of its folder: synchronising the
// folder makes the replacement itself last through a power loss. A folder that can not be
// opened for it (no read permission) or a file system that does not synchronise folders (some
// network shares) keeps the rename as it stands; only the disk's own failure fails the save.
bool sync_folder(const QString& folder) {
    const int fd = ::open(native(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return true;
    const bool synced = ::fsync(fd) == 0 || errno == EINVAL || errno == ENOTSUP;
    const int error = errno;
    ::close(fd);
    errno = error;
    return synced;
}

}  // namespace

QString temporary_name(const QString& path) {
    static const char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    QString name = path + temporary_mark;
    for (int k = 0; k < temporary_letters; ++k)
        name += QLatin1Char(letters[QRandomGenerator::global()->bounded(62)]);
    return name;
}

bool put_in_place(const QString& temporary, const QString& path) {
    const int fd = ::open(native(temporary).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool synced = ::fsync(fd) == 0;
    if (::close(fd) != 0 || !synced) return false;
    if (::rename(native(temporary).constData(), native(path).constData()) != 0) return false;
    return sync_folder(QFileInfo(path).absolutePath());
}

WholeFileReplacement::~WholeFileReplacement() {
    for (const Staged& file : staged) ::unlink(native(file.temporary).constData());
}

bool WholeFileReplacement::failed(int error) {
    last_error = error;
    return false;
}

bool WholeFileReplacement::write(const QString& path, const QByteArray& bytes, bool read_only) {
    struct stat old {};
    const bool existed = ::stat(native(path).constData(), &old) == 0;
    if (existed && S_ISDIR(old.st_mode)) return failed(EISDIR);
    remove_left_behind(path);

    QString temporary;
    const int fd = create_temporary(path, temporary);
    if (fd < 0) return failed(errno);
    staged.push_back({path, temporary});
    bool written = write_all(fd, bytes);
    // The new file takes the old one's permissions, as a file written in place would keep them.
    if (written && (existed || read_only)) {
        struct stat created {};
        written = existed || ::fstat(fd, &created) == 0;
        mode_t mode = (existed ? old.st_mode : created.st_mode) & 07777;
        if (read_only) mode &= ~mode_t(S_IWUSR | S_IWGRP | S_IWOTH);
        if (written) written = ::fchmod(fd, mode) == 0;
    }
    // The bytes reach the disk before the rename, so that a power loss leaves the old file or
    // the new one, never an empty one.
    if (written) written = ::fsync(fd) == 0;
    const int error = errno;
    // A share may report a failed write only at the close.
    if (::close(fd) != 0 && written && errno != EINTR) return failed(errno);
    if (!written) return failed(error);
    return true;
}

bool WholeFileReplacement::commit() {
    QStringList folders;
    while (!staged.empty()) {
        const Staged file = staged.front();
        if (::rename(native(file.temporary).constData(), native(file.path).constData()) != 0)
            return failed(errno);
        staged.erase(staged.begin());
        const QString folder = QFileInfo(file.path).absolutePath();
        if (!folders.contains(folder)) folders.append(folder);
    }
    // Every file is in place; a folder the disk could not confirm fails the save.
    for (const QString& folder : folders)
        if (!sync_folder(folder)) return failed(errno);
    return true;
}

bool replace_whole_file(const QString& path, const QByteArray& bytes) {
    const QFileInfo info(path);
    if (info.exists() && !info.isDir() && !(info.permissions() & QFileDevice::WriteOwner))
        return false;
    WholeFileReplacement replacement;
    return replacement.write(path, bytes) && replacement.commit();
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
