#pragma once
// File and folder dialogs answered from a script.
//   choose_folder(path)   the next folder chooser returns `path` ("" is a cancel)
//   choose_file(path)     the next file chooser returns `path` ("" is a cancel)
//   choose_files(parts)   the next chooser of several files returns these parts ({} cancels)
//   save_as(path)         the next chooser of a file to write returns `path` ("" cancels)
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
    QStringList open_files(const QString& initial_directory, const QString& title,
                           const QString& filter) override;
    QString save_file(const QString& title, const QString& default_suffix,
                      const QString& filter) override;
    void choose_files(const QStringList& parts) { file_lists.push_back(parts); }
    void save_as(const QString& path) { saves.push_back(path); }
    QStringList suffixes;  // the default extension of each save chooser
    void choose_folder(const QString& path) { folders.push_back(path); }
    void choose_file(const QString& path) { files.push_back(path); }
    QStringList titles;
    QStringList opened_in;
    QStringList filters;

private:
    std::deque<QString> folders;
    std::deque<QString> files;
    std::deque<QStringList> file_lists;
    std::deque<QString> saves;
};

}  // namespace zel::test
