#pragma once
// One edit of a profile file's bytes as the tables of the profile tests write it: a null key
// deletes the section, a null value the key.
#include <QByteArray>
#include <QString>

#include "data/profile_file.h"

namespace zel::test {

inline bool edit(QByteArray& contents, const char* section, const char* key, const char* value) {
    const QString k = QString::fromLatin1(key), v = QString::fromLatin1(value);
    return edit_profile(contents, QString::fromLatin1(section), key ? &k : nullptr,
                        value ? &v : nullptr);
}

}  // namespace zel::test
