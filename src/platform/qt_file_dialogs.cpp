#include "platform/qt_file_dialogs.h"

#include <QDir>
#include <QFileDialog>

namespace zel {

QString QtFileDialogs::browse_for_folder(const QString& title) {
    // The user's own folder: patients are kept there or below, never in the program's folder.
    const QString folder = QFileDialog::getExistingDirectory(
        parent, title, QDir::homePath(), QFileDialog::ShowDirsOnly);
    return folder.isEmpty() ? QString() : QDir::cleanPath(folder);
}

QString QtFileDialogs::open_file(const QString& initial_directory, const QString& filter) {
    // "Description|*.ext" becomes Qt's "Description (*.ext)".
    const qsizetype bar = filter.indexOf(QLatin1Char('|'));
    const QString qt_filter =
        bar < 0 ? filter : filter.left(bar) + QStringLiteral(" (") + filter.mid(bar + 1) + QLatin1Char(')');
    const QString path = QFileDialog::getOpenFileName(parent, QString(), initial_directory, qt_filter);
    return path.isEmpty() ? QString() : QDir::cleanPath(path);
}

}  // namespace zel
