#include "platform/qt_file_dialogs.h"

#include <QDir>
#include <QFileDialog>

namespace zel {

QString QtFileDialogs::browse_for_folder(const QString& title) {
    const QString folder = QFileDialog::getExistingDirectory(
        parent, title, QString(), QFileDialog::ShowDirsOnly);
    return folder.isEmpty() ? QString() : QDir::cleanPath(folder);
}

}  // namespace zel
