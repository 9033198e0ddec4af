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

}  // namespace zel::test
