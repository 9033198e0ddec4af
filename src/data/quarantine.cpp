#include "data/quarantine.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

#include "app/zel_error.h"

namespace zel {

namespace {

constexpr int last_numbered_copy = 100;

[[noreturn]] void fail(const char* source) {
    throw ZelError(err_path_file_access, QString::fromLatin1(source),
                   QStringLiteral("Path/File access error"));
}

QString without_trailing_slash(const QString& path) {
    return path.endsWith(QLatin1Char('/')) ? path.chopped(1) : path;
}

QString absolute_clean(const QString& path) {
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

void make_folder(const QString& path) {
    if (!QFileInfo(path).isDir() && !QDir().mkdir(path)) fail("copy_folder");
}

void make_writable(const QString& path, QFileDevice::Permissions extra) {
    const QFileDevice::Permissions permissions = QFile::permissions(path);
    const QFileDevice::Permissions wanted = permissions | QFileDevice::WriteOwner | extra;
    if (wanted != permissions) QFile::setPermissions(path, wanted);
}

// Everything in `from` into `to`, a folder made for it. A copy keeps its source's
// permissions, so the patient file stays read-only.
void copy_contents(const QString& from, const QString& to) {
    const QFileInfoList entries = QDir(from).entryInfoList(QDir::AllEntries | QDir::Hidden |
                                                           QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        const QString target = to + QLatin1Char('/') + entry.fileName();
        if (entry.isDir() && !entry.isSymLink()) {
            make_folder(target);
            copy_contents(entry.filePath(), target);
            continue;
        }
        if (!QFile::copy(entry.filePath(), target)) fail("copy_folder");
    }
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

}  // namespace

void quarantine_patient(const QString& zel_path, const QString& quarantine_name) {
    const QString source =
        zel_path.left(std::max<qsizetype>(zel_path.lastIndexOf(QLatin1Char('/')), 0));
    QString destination = source.left(source.lastIndexOf(QLatin1Char('/')) + 1) + quarantine_name;
    if (copy_folder(source, destination)) delete_folder(source);
}

bool copy_folder(const QString& source, QString& destination) {
    const QString from = without_trailing_slash(source);
    if (from.isEmpty() || !QFileInfo(from).isDir()) return false;
    // A destination inside the folder itself would go with it when the folder is deleted.
    const QString clean_from = absolute_clean(from);
    const QString clean_destination = absolute_clean(destination);
    if (clean_destination == clean_from ||
        clean_destination.startsWith(clean_from + QLatin1Char('/')))
        return false;

    make_folder(destination);
    const QString name = QFileInfo(from).fileName();
    QString target = destination + QLatin1Char('/') + name;
    if (QFileInfo::exists(target) || QFileInfo(target).isSymLink()) {
        // The patient quarantined before is kept; this one goes beside it under a number. The
        // folder is made here, and one that exists already (all numbers taken) is a failure,
        // never a copy over the earlier patient's files.
        int number = 0;
        for (int i = 2; i <= last_numbered_copy; ++i) {
            if (!QFileInfo::exists(QStringLiteral("%1( %2)").arg(target).arg(i))) {
                number = i;
                break;
            }
        }
        target = QStringLiteral("%1( %2)").arg(target).arg(number);
        if (!QDir().mkdir(target)) fail("copy_folder");
        destination = target;
    } else if (!QDir().mkdir(target)) {
        return false;
    }
    // A copy that fails leaves nothing of itself behind, and the patient where it was.
    try {
        copy_contents(from, target);
    } catch (const ZelError&) {
        try {
            delete_folder(target);
        } catch (const ZelError&) {
            // What can't be taken away stays; the patient stays where it was all the same.
        }
        return false;
    }
    return true;
}

void delete_folder(const QString& folder) {
    const QString path = without_trailing_slash(folder);
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
