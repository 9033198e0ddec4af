#include "fakes/fake_file_dialogs.h"

namespace zel::test {

QString FakeFileDialogs::browse_for_folder(const QString& title) {
    titles.append(title);
    if (folders.empty()) return {};
    const QString path = folders.front();
    folders.pop_front();
    return path;
}

QString FakeFileDialogs::open_file(const QString& initial_directory, const QString& filter) {
    opened_in.append(initial_directory);
    filters.append(filter);
    if (files.empty()) return {};
    const QString path = files.front();
    files.pop_front();
    return path;
}

QStringList FakeFileDialogs::open_files(const QString& initial_directory, const QString& title,
                                        const QString& filter) {
    opened_in.append(initial_directory);
    titles.append(title);
    filters.append(filter);
    if (file_lists.empty()) return {};
    const QStringList parts = file_lists.front();
    file_lists.pop_front();
    return parts;
}

QString FakeFileDialogs::save_file(const QString& title, const QString& default_suffix,
                                   const QString& filter) {
    titles.append(title);
    suffixes.append(default_suffix);
    filters.append(filter);
    if (saves.empty()) return {};
    const QString path = saves.front();
    saves.pop_front();
    return path;
}

}  // namespace zel::test
