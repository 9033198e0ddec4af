#include "platform/qt_file_dialogs.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>

namespace zel {

QString QtFileDialogs::browse_for_folder(const QString& title) {
    // The user's own folder: patients are kept there or below, never in the program's folder.
    const QString folder = QFileDialog::getExistingDirectory(
        parent, title, QDir::homePath(), QFileDialog::ShowDirsOnly);
    return folder.isEmpty() ? QString() : QDir::cleanPath(folder);
}

namespace {

// "Description|*.ext" becomes Qt's "Description (*.ext)".
QString qt_filter(const QString& filter) {
    const qsizetype bar = filter.indexOf(QLatin1Char('|'));
    return bar < 0 ? filter
                   : filter.left(bar) + QStringLiteral(" (") + filter.mid(bar + 1) + QLatin1Char(')');
}

}  // namespace

QString QtFileDialogs::open_file(const QString& initial_directory, const QString& filter) {
    const QString path =
        QFileDialog::getOpenFileName(parent, QString(), initial_directory, qt_filter(filter));
    return path.isEmpty() ? QString() : QDir::cleanPath(path);
}

QStringList QtFileDialogs::open_files(const QString& initial_directory, const QString& title,
                                      const QString& filter) {
    const QStringList paths =
        QFileDialog::getOpenFileNames(parent, title, initial_directory, qt_filter(filter));
    if (paths.size() <= 1) return paths;
    // Several files come from one folder: the folder first, then the names.
    QStringList parts{QFileInfo(paths.front()).absolutePath()};
    for (const QString& path : paths) parts.append(QFileInfo(path).fileName());
    return parts;
}

QString QtFileDialogs::save_file(const QString& title, const QString& default_suffix,
                                 const QString& filter) {
    QFileDialog dialog(parent, title, QString(), qt_filter(filter));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    QString suffix = default_suffix;
    suffix.remove(QLatin1Char('*')).remove(QLatin1Char('.'));
    dialog.setDefaultSuffix(suffix);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
    return QDir::cleanPath(dialog.selectedFiles().front());
}

}  // namespace zel
