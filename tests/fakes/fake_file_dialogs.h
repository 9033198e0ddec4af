#pragma once
// File and folder dialogs answered from a script.
//   choose_folder(path)   the next folder chooser returns `path` ("" is a cancel)
//   titles                the title of every dialog shown, in order
// A chooser with nothing scripted is cancelled.
#include <QStringList>
#include <deque>

#include "platform/file_dialogs.h"

namespace zel::test {

class FakeFileDialogs final : public FileDialogs {
public:
    QString browse_for_folder(const QString& title) override;
    void choose_folder(const QString& path) { folders.push_back(path); }
    QStringList titles;

private:
    std::deque<QString> folders;
};

}  // namespace zel::test
