#include "data/whole_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <cerrno>
#include <cstdio>

#include "data/file_access.h"
#include "data/file_fault.h"

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
        const int fd = ::open(native(name).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                              file_creation_mode);
        if (fd >= 0 || errno != EEXIST) {
            temporary = name;
            return fd;
        }
    }
    errno = EEXIST;
    return -1;
}

// The new file stands in for the old one: it takes its permissions, and its group where this
// user belongs to it, as a file written in place would keep them. A file that is new keeps its
// creation mode. True, or false with errno set.
bool take_permissions(int fd, const struct stat* old, bool read_only) {
    struct stat created {};
    if (::fstat(fd, &created) != 0) return false;
    if (old && old->st_gid != created.st_gid &&
        ::fchown(fd, static_cast<uid_t>(-1), old->st_gid) != 0) {
        // A group this user is not in: the file keeps the user's own.
    }
    mode_t mode = (old ? old->st_mode : created.st_mode) & 07777;
    if (read_only) mode &= ~mode_t(S_IWUSR | S_IWGRP | S_IWOTH);
    return mode == (created.st_mode & 07777) || ::fchmod(fd, mode) == 0;
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

// Swaps the two names in one step, so that the old file stays under the temporary name until
// the files put in place after it are in place too. False, with errno, where the file system
// can't swap (EINVAL): the caller renames instead and has no way back.
bool exchange(const QString& a, const QString& b) {
    return ::renameat2(AT_FDCWD, native(a).constData(), AT_FDCWD, native(b).constData(),
                       RENAME_EXCHANGE) == 0;
}

}  // namespace

QString temporary_name(const QString& path) {
    static const char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    QString name = path + temporary_mark;
    for (int k = 0; k < temporary_letters; ++k)
        name += QLatin1Char(letters[QRandomGenerator::global()->bounded(62)]);
    return name;
}

Written put_in_place(const QString& temporary, const QString& path) {
    const auto failed = [&path] { return Written{errno, path}; };
    struct stat old {};
    const bool existed = ::stat(native(path).constData(), &old) == 0;
    const int fd = ::open(native(temporary).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return failed();
    // The library made its file with the process's mask alone.
    struct stat drawn {};
    bool done = ::fstat(fd, &drawn) == 0;
    drawn.st_mode &= file_creation_mode;
    if (done) done = take_permissions(fd, existed ? &old : &drawn, false);
    if (done) done = ::fsync(fd) == 0;
    const int error = errno;
    if (::close(fd) != 0 && done && errno != EINTR) return failed();
    if (!done) return Written{error, path};
    if (::rename(native(temporary).constData(), native(path).constData()) != 0) return failed();
    if (!sync_folder(QFileInfo(path).absolutePath())) return failed();
    return {};
}

WholeFileReplacement::~WholeFileReplacement() {
    for (const Staged& file : staged) ::unlink(native(file.temporary).constData());
}

bool WholeFileReplacement::failed(int error, const QString& path) {
    outcome = {error, path};
    return false;
}

bool WholeFileReplacement::write(const QString& path, const QByteArray& bytes, bool read_only) {
    struct stat old {};
    const bool existed = ::stat(native(path).constData(), &old) == 0;
    if (existed && S_ISDIR(old.st_mode)) return failed(EISDIR, path);
    remove_left_behind(path);

    QString temporary;
    const int fd = create_temporary(path, temporary);
    if (fd < 0) return failed(errno, path);
    staged.push_back({path, temporary});
    int error = write_all(fd, bytes.constData(), static_cast<size_t>(bytes.size()));
    if (!error && !take_permissions(fd, existed ? &old : nullptr, read_only)) error = errno;
    // The bytes reach the disk before the rename, so that a power loss leaves the old file or
    // the new one, never an empty one.
    if (!error && ::fsync(fd) != 0) error = errno;
    // A share may report a failed write only at the close.
    if (::close(fd) != 0 && !error && errno != EINTR) error = errno;
    if (error) return failed(error, path);
    return true;
}

bool WholeFileReplacement::undo(std::vector<Staged>& placed, int error, const QString& path) {
    while (!placed.empty()) {
        const Staged file = placed.back();
        placed.pop_back();
        if (file.old == Old::kept && exchange(file.temporary, file.path)) {
            ::unlink(native(file.temporary).constData());
        } else if (file.old == Old::none) {
            ::unlink(native(file.path).constData());
        } else {
            std::fprintf(stderr,
                         "zelmoor: %s: saved, but not the files saved with it; the old file "
                         "could not be put back\n",
                         qPrintable(file.path));
        }
    }
    return failed(error, path);
}

bool WholeFileReplacement::commit() {
    QStringList folders;
    std::vector<Staged> placed;
    while (!staged.empty()) {
        Staged file = staged.front();
        const QByteArray from = native(file.temporary), to = native(file.path);
        file.old = ::access(to.constData(), F_OK) == 0 ? Old::gone : Old::none;
        // Only a file that others follow needs a way back.
        if (staged.size() > 1 && file.old == Old::gone) {
            if (exchange(file.temporary, file.path))
                file.old = Old::kept;
            else if (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP)
                return undo(placed, errno, file.path);
        }
        if (file.old != Old::kept && ::rename(from.constData(), to.constData()) != 0)
            return undo(placed, errno, file.path);
        staged.erase(staged.begin());
        placed.push_back(file);
        const QString folder = QFileInfo(file.path).absolutePath();
        if (!folders.contains(folder)) folders.append(folder);
    }
    for (const Staged& file : placed)
        if (file.old == Old::kept) ::unlink(native(file.temporary).constData());
    // Every file is in place; a folder the disk could not confirm fails the save.
    for (const QString& folder : folders)
        if (!sync_folder(folder)) return failed(errno, folder);
    return true;
}

Written replace_whole_file(const QString& path, const QByteArray& bytes, bool read_only) {
    if (read_only_file(path)) return {EACCES, path};
    WholeFileReplacement replacement;
    if (replacement.write(path, bytes, read_only) && replacement.commit()) return {};
    return replacement.result();
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
