#pragma once
// File and folder dialogs. Each runs its own event loop in the program, so frames and timers
// go on being handled while it is up.
#include <QString>
#include <QStringList>

namespace zel {

class FileDialogs {
public:
    virtual ~FileDialogs() = default;
    // A chooser of file-system folders under `title`: the chosen folder's path, or the empty
    // string when the operator cancels.
    virtual QString browse_for_folder(const QString& title) = 0;
    // A chooser of one existing file, opened in `initial_directory`, showing the files that
    // match `filter` ("Description|*.ext"): the chosen file's path, or the empty string when
    // the operator cancels.
    virtual QString open_file(const QString& initial_directory, const QString& filter) = 0;
    // A chooser of one or several existing files under `title`: for one file its full path;
    // for several the folder, then each file's name; nothing when the operator cancels.
    virtual QStringList open_files(const QString& initial_directory, const QString& title,
                                   const QString& filter) = 0;
    // A chooser of a file to write under `title`; a name typed without an extension gets
    // `default_suffix`. The empty string when the operator cancels.
    virtual QString save_file(const QString& title, const QString& default_suffix,
                              const QString& filter) = 0;
};

}  // namespace zel
