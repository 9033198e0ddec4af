#pragma once
// File and folder dialogs answered from a script.
//   choose_folder(path)   the next folder chooser returns `path` ("" is a cancel)
//   choose_file(path)     the next file chooser returns `path` ("" is a cancel)
//   titles                the title of every dialog shown, in order
//   opened_in, filters    where each file chooser opened and what it showed
// A chooser with nothing scripted is cancelled.
#include <QStringList>
#include <deque>

#include "platform/file_dialogs.h"

namespace zel::test {

class FakeFileDialogs final : public FileDialogs {
public:
    QString browse_for_folder(const QString& title) override;
    QString open_file(const QString& initial_directory, const QString& filter) override;
    void choose_folder(const QString& path) { folders.push_back(path); }
    void choose_file(const QString& path) { files.push_back(path); }
    QStringList titles;
    QStringList opened_in;
    QStringList filters;

private:
    std::deque<QString> folders;
    std::deque<QString> files;
};

}  // namespace zel::test
