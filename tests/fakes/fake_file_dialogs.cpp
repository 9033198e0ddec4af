#include "fakes/fake_file_dialogs.h"

#include "fakes/scripted.h"

namespace zel::test {

QString FakeFileDialogs::browse_for_folder(const QString& title) {
    titles.append(title);
    return next_of(folders);
}

QString FakeFileDialogs::open_file(const QString& initial_directory, const QString& filter) {
    opened_in.append(initial_directory);
    filters.append(filter);
    return next_of(files);
}

QStringList FakeFileDialogs::open_files(const QString& initial_directory, const QString& title,
                                        const QString& filter) {
    opened_in.append(initial_directory);
    titles.append(title);
    filters.append(filter);
    return next_of(file_lists);
}

QString FakeFileDialogs::save_file(const QString& title, const QString& default_suffix,
                                   const QString& filter) {
    titles.append(title);
    suffixes.append(default_suffix);
    filters.append(filter);
    return next_of(saves);
}

}  // namespace zel::test
