#include "data/quarantine.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <array>
#include <cerrno>
#include <cstdio>

#include "app/zel_error.h"
#include "data/file_access.h"
#include "data/file_name.h"
#include "data/patient_file.h"

namespace zel {

namespace {

constexpr int last_numbered_copy = 100;
// A copy across file systems lies under this mark until it is whole; the patient's folder,
// once copied, under the other while it is removed.
const QString incomplete_mark = QStringLiteral(".incomplete");
const QString removing_mark = QStringLiteral(".removing");

[[noreturn]] void fail(const char* source) {
    throw ZelError(err_path_file_access, QString::fromLatin1(source),
                   QStringLiteral("Path/File access error"));
}

QByteArray native(const QString& path) { return QFile::encodeName(path); }

QString absolute_clean(const QString& path) {
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

QString parent_of(const QString& path) { return QFileInfo(path).path(); }
QString name_of(const QString& path) { return QFileInfo(path).fileName(); }
QString in(const QString& folder, const QString& name) { return QDir(folder).filePath(name); }

bool status_of(const QString& path, struct stat& status) {
    return ::lstat(native(path).constData(), &status) == 0;
}

// A name that can't even be looked at counts as taken.
bool taken(const QString& path) {
    struct stat status {};
    return status_of(path, status) || errno != ENOENT;
}

// Flushes a file or a folder (its entries) to the disk. A folder that can't be opened for it
// or a file system that does not synchronise folders keeps what it has; only the disk's own
// failure counts.
bool synchronised(const QString& path) {
    const int fd = ::open(native(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return true;
    const bool done = ::fsync(fd) == 0 || errno == EINVAL || errno == ENOTSUP || errno == EROFS;
    ::close(fd);
    return done;
}

void synchronise(const QString& path) {
    if (!synchronised(path)) fail("quarantine_patient");
}

// A rename that never replaces what is at `to` (an empty folder would be replaced silently).
// The errno of the failure, 0 on success.
int rename_to_free_name(const QString& from, const QString& to) {
    if (::renameat2(AT_FDCWD, native(from).constData(), AT_FDCWD, native(to).constData(),
                    RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    // A file system without the flag: the name was free a moment ago.
    if (taken(to)) return EEXIST;
    return ::rename(native(from).constData(), native(to).constData()) == 0 ? 0 : errno;
}

// The file's bytes, permissions and times into a new file `to`, on the disk and as long as
// the source before it counts as copied.
bool copy_file(const QString& from, const QString& to, const struct stat& source) {
    const int input = ::open(native(from).constData(), O_RDONLY | O_CLOEXEC);
    if (input < 0) return false;
    const int output =
        ::open(native(to).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (output < 0) {
        ::close(input);
        return false;
    }
    bool copied = true;
    off_t size = 0;
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t got = ::read(input, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) {
            copied = got == 0;
            break;
        }
        if (write_all(output, buffer.data(), static_cast<size_t>(got)) != 0) {
            copied = false;
            break;
        }
        size += got;
    }
    const std::array<timespec, 2> times{source.st_atim, source.st_mtim};
    struct stat written {};
    copied = copied && ::fchmod(output, source.st_mode & 07777) == 0 &&
             ::futimens(output, times.data()) == 0 && ::fsync(output) == 0 &&
             ::fstat(output, &written) == 0 && written.st_size == source.st_size &&
             size == source.st_size;
    copied = ::close(output) == 0 && copied;
    ::close(input);
    return copied;
}

QStringList names_in(const QString& folder, bool& listed) {
    QStringList names;
    DIR* dir = ::opendir(native(folder).constData());
    listed = dir != nullptr;
    if (!dir) return names;
    errno = 0;
    while (const dirent* entry = ::readdir(dir)) {
        const QString name = QFile::decodeName(entry->d_name);
        if (name != QLatin1String(".") && name != QLatin1String("..")) names.append(name);
    }
    listed = errno == 0;
    ::closedir(dir);
    return names;
}

// A file, link or folder tree copied to `to`, every file and folder synchronised.
bool copy_tree(const QString& from, const QString& to) {
    struct stat status {};
    if (!status_of(from, status)) return false;
    if (S_ISREG(status.st_mode)) return copy_file(from, to, status);
    if (S_ISLNK(status.st_mode)) {
        QByteArray link(static_cast<qsizetype>(status.st_size) + 1, '\0');
        const ssize_t length = ::readlink(native(from).constData(), link.data(), link.size());
        if (length < 0 || length >= link.size()) return false;
        link.truncate(length);
        return ::symlink(link.constData(), native(to).constData()) == 0 &&
               synchronised(parent_of(to));
    }
    // A pipe or a device is no file of a patient's: nothing moves.
    if (!S_ISDIR(status.st_mode)) return false;
    if (::mkdir(native(to).constData(), S_IRWXU) != 0) return false;
    bool listed = false;
    for (const QString& name : names_in(from, listed))
        if (!copy_tree(in(from, name), in(to, name))) return false;
    return listed && ::chmod(native(to).constData(), status.st_mode & 07777) == 0 &&
           synchronised(to);
}

// Removing an entry takes a folder open to writing around it; the entry's own read-only
// attribute (the patient file's) doesn't hold it back.
void open_folders(const QString& folder) {
    make_writable(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    const QFileInfoList folders =
        QDir(folder).entryInfoList(QDir::Dirs | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : folders)
        if (!entry.isSymLink()) open_folders(entry.filePath());
}

// What a failed or interrupted copy left; errors are no matter, the patient is elsewhere.
void remove_copy(const QString& path) {
    struct stat status {};
    if (!status_of(path, status)) return;
    if (!S_ISDIR(status.st_mode)) {
        ::unlink(native(path).constData());
        return;
    }
    try {
        delete_folder(path);
    } catch (const ZelError&) {
    }
}

// The source of a copy, once the copy is in place. A folder leaves its name first, so that a
// crash while it is removed leaves no part of it where the patient was; its patient files go
// first, so that no part of it is taken for a patient when the patients are searched.
void remove_source(const QString& source) {
    struct stat status {};
    if (!status_of(source, status)) fail("quarantine_patient");
    if (S_ISDIR(status.st_mode)) {
        const QString leaving = source + removing_mark;
        remove_copy(leaving);
        if (rename_to_free_name(source, leaving) != 0) fail("quarantine_patient");
        synchronise(parent_of(source));
        for (const QString& name :
             QDir(leaving).entryList({QStringLiteral("*.zel")}, QDir::Files | QDir::Hidden))
            QFile::remove(in(leaving, name));
        delete_folder(leaving);
        return;
    }
    if (::unlink(native(source).constData()) != 0) fail("quarantine_patient");
    synchronise(parent_of(source));
}

// Moves a file or folder to `target`, a free name: by a rename where both lie on one file
// system, so that a crash leaves it whole in one place or the other. Across file systems the
// copy is made under "<target>.incomplete", then renamed to `target`, and only then is the
// source removed. False, with the source as it was and no copy left, when it can't be moved.
bool move_entry(const QString& source, const QString& target) {
    const int error = rename_to_free_name(source, target);
    if (error == 0) {
        synchronise(parent_of(target));
        synchronise(parent_of(source));
        return true;
    }
    if (error != EXDEV) return false;
    const QString staged = target + incomplete_mark;
    remove_copy(staged);  // a copy that a crash cut short
    if (!copy_tree(source, staged) || rename_to_free_name(staged, target) != 0) {
        remove_copy(staged);
        return false;
    }
    synchronise(parent_of(target));
    remove_source(source);
    return true;
}

void make_quarantine(const QString& quarantine) {
    if (QFileInfo(quarantine).isDir()) return;
    if (make_folder(quarantine) != 0) fail("quarantine_patient");
    synchronise(parent_of(quarantine));
}

// The name itself, or the first of "<name>( 2)" to "<name>( 100)" that is free, or
// "<name>( 0)". The patient quarantined before under a name is never written over.
QString free_name(const QString& quarantine, const QString& name) {
    const QString plain = in(quarantine, name);
    if (!taken(plain)) return plain;
    int number = 0;
    for (int i = 2; i <= last_numbered_copy && number == 0; ++i)
        if (!taken(QStringLiteral("%1( %2)").arg(plain).arg(i))) number = i;
    const QString numbered = QStringLiteral("%1( %2)").arg(plain).arg(number);
    if (taken(numbered)) fail("quarantine_patient");
    return numbered;
}

// "<last>_<first>_<id>" from lines 3 to 5 of the patient file, as the console names the
// patient's folder; empty when those lines are not the name lines.
QString folder_name_from_lines(const QString& zel) {
    QFile file(zel);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QList<QByteArray> lines = file.read(64 * 1024).split('\n');
    static const char* const labels[] = {
        "Patient Last Name:", "Patient First Name:", "Patient Medical ID:"};
    QStringList parts;
    for (int k = 0; k < 3; ++k) {
        QByteArray line = lines.value(k + 2);
        if (line.endsWith('\r')) line.chop(1);
        const qsizetype label = static_cast<qsizetype>(qstrlen(labels[k]));
        if (!line.startsWith(labels[k]) || line.size() == label) return {};
        parts.append(QString::fromLatin1(line.mid(label)));
    }
    const QString name = parts.join(QLatin1Char('_'));
    if (name.contains(QLatin1Char('/')) || name.contains(QChar(0)) || native(name).size() > 255)
        return {};
    return name;
}

// Nothing but one patient's files: this ".zel", its companion, the session history, curve
// files and temporary files of a replacement that a crash cut short; no folder, no link.
bool holds_one_patient_only(const QString& folder, const QString& zel) {
    const QStringList own = {name_of(zel), name_of(companion_path(zel)),
                             QStringLiteral("session.ini")};
    bool listed = false;
    const QStringList names = names_in(folder, listed);
    if (!listed) return false;
    for (const QString& name : names) {
        struct stat status {};
        if (!status_of(in(folder, name), status) || !S_ISREG(status.st_mode)) return false;
        if (own.contains(name) || name.endsWith(QLatin1String(".dat"))) continue;
        bool temporary = false;
        for (const QString& file : own)
            temporary = temporary || name.startsWith(file + QLatin1String(".new-"));
        if (!temporary) return false;
    }
    return true;
}

// The folder is `inner` or holds it.
bool is_or_holds(const QString& folder, const QString& inner) {
    if (inner.isEmpty()) return false;
    return inner == folder ||
           inner.startsWith(folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/'));
}

bool is_file_system_root(const QString& folder) {
    struct stat here {};
    struct stat above {};
    if (::stat(native(folder).constData(), &here) != 0 ||
        ::stat(native(folder + QStringLiteral("/..")).constData(), &above) != 0)
        return true;
    return here.st_dev != above.st_dev || here.st_ino == above.st_ino;
}

// Folders that hold more than any one patient, whatever lies in them.
bool must_stay(const QString& folder, const QString& data_directory) {
    if (is_file_system_root(folder)) return true;
    for (const QString& kept : {data_directory, QDir::homePath()}) {
        if (kept.isEmpty()) continue;
        for (const QString& form : {absolute_clean(kept), QFileInfo(kept).canonicalFilePath()})
            if (is_or_holds(folder, form)) return true;
    }
    return false;
}

}  // namespace

void quarantine_patient(const QString& zel_path, const QString& quarantine_name,
                        const QString& data_directory) {
    const QString zel = absolute_clean(zel_path);
    struct stat status {};
    if (!status_of(zel, status) || S_ISDIR(status.st_mode)) return;
    const QString folder = parent_of(zel);
    if (name_of(folder) == quarantine_name || name_of(parent_of(folder)) == quarantine_name)
        return;  // out of use already
    const QString named = folder_name_from_lines(zel);
    const QString real_folder = QFileInfo(folder).canonicalFilePath();
    const bool own_folder = !real_folder.isEmpty() && !must_stay(folder, data_directory) &&
                            !must_stay(real_folder, data_directory) &&
                            ((!named.isEmpty() && name_of(real_folder) == named) ||
                             holds_one_patient_only(real_folder, zel));
    if (own_folder) {
        const QString quarantine = in(parent_of(real_folder), quarantine_name);
        make_quarantine(quarantine);
        move_entry(real_folder, free_name(quarantine, name_of(real_folder)));
        return;
    }

    // From a folder of other things only the patient's two files move, into a folder of the
    // patient's own in the quarantine. The companion is copied in first: the patient is in
    // quarantine from the moment its file is, and what stays behind then is a lone companion.
    const QString quarantine = in(folder, quarantine_name);
    make_quarantine(quarantine);
    const QString base = name_of(zel).endsWith(QLatin1String(".zel")) && name_of(zel).size() > 4
                             ? name_of(zel).chopped(4)
                             : name_of(zel);
    const QString target = free_name(quarantine, named.isEmpty() ? base : named);
    if (make_folder(target) != 0) fail("quarantine_patient");
    synchronise(quarantine);
    const QString companion = companion_path(zel);
    struct stat companion_status {};
    const bool with_companion =
        status_of(companion, companion_status) && S_ISREG(companion_status.st_mode);
    const bool moved = (!with_companion ||
                        (copy_file(companion, in(target, name_of(companion)), companion_status) &&
                         synchronised(target))) &&
                       move_entry(zel, in(target, name_of(zel)));
    if (!moved) {
        remove_copy(target);
        return;
    }
    if (with_companion && ::unlink(native(companion).constData()) != 0) fail("quarantine_patient");
    synchronise(folder);
}

void delete_folder(const QString& folder) {
    const QString path = folder.endsWith(QLatin1Char('/')) ? folder.chopped(1) : folder;
    const QFileInfo info(path);
    if (!info.isDir()) return;
    if (info.isSymLink()) {
        if (!QFile::remove(path)) fail("delete_folder");
        return;
    }
    open_folders(path);
    if (!QDir(path).removeRecursively()) fail("delete_folder");
}

}  // namespace zel
