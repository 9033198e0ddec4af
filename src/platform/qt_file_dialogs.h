#pragma once
// File and folder dialogs of Qt, owned by the main window.
#include <QWidget>

#include "platform/file_dialogs.h"

namespace zel {

class QtFileDialogs final : public FileDialogs {
public:
    QString browse_for_folder(const QString& title) override;
    QString open_file(const QString& initial_directory, const QString& filter) override;
    QStringList open_files(const QString& initial_directory, const QString& title,
                           const QString& filter) override;
    QString save_file(const QString& title, const QString& default_suffix,
                      const QString& filter) override;
    QWidget* parent = nullptr;
};

}  // namespace zel
