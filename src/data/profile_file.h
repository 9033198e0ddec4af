#pragma once
// Profile files ("datapath.ini", "session.ini") read and written as Windows does, since
// sites bring files that Windows wrote and people edited by hand: sections in brackets,
// "key=value" lines, Latin-1 text. CR LF, a lone CR or LF each end a line. A line whose first
// character after blanks is ";" is a comment. Section and key names match without regard to
// case and are trimmed of spaces (not tabs); the first section and the first key of a name are
// the ones read and written.
//
// Reading strips blanks around a value and one pair of enclosing quotes, and cuts the value
// to the caller's buffer less its closing NUL (255 characters for the usual 256). A missing
// file, section or key gives the default, less its trailing spaces.
//
// Writing replaces the value of a key in place (the line keeps its spelling of the key and
// all up to "="), puts a new key behind the last entry of its section (before its trailing
// comments and blank lines) and a new section at the end of the file, each line written
// ending in CR LF; every other byte of the file stays as it was. Deleting a
// section keeps the comment lines inside it; deleting from a missing file leaves an empty one.
// The file is replaced whole through a temporary file. A write fails (false) when the file
// can't be read or written, or when a name or value would not read back the same: a line
// break in any of them, a key with "=" or beginning with ";" or "[", a character outside
// Latin-1.
#include <QByteArray>
#include <QHash>
#include <QString>

#include "data/whole_file.h"

namespace zel {

constexpr int profile_buffer_size = 256;

QString read_profile_string(const QString& path, const QString& section, const QString& key,
                            const QString& default_value, int buffer_size = profile_buffer_size);
// True when written; otherwise what failed (EINVAL for a text the file can't hold).
Written write_profile_string(const QString& path, const QString& section, const QString& key,
                             const QString& value);
Written delete_profile_key(const QString& path, const QString& section, const QString& key);
Written delete_profile_section(const QString& path, const QString& section);

// The file's bytes, empty when it is missing; false, with what failed, when it can't be read.
// Several edits made in memory on them and written back with replace_whole_file land together
// or not at all.
Written read_profile_file(const QString& path, QByteArray& contents);
// The same as the reads take them: empty when the file is missing or can't be read.
QByteArray read_profile_file(const QString& path);

// A file's sections and keys found once, for a reader of many values (the history window
// reads seven for every session the count names): each value as profile_value gives it from
// the same bytes, without going through the file again.
class ProfileIndex {
public:
    explicit ProfileIndex(const QByteArray& contents);
    QString value(const QString& section, const QString& key, const QString& default_value,
                  int buffer_size = profile_buffer_size) const;

private:
    // The first section of each name and the first line of each key in it, by folded name.
    QHash<QString, QHash<QString, QByteArray>> sections;
};

// The same on a file's bytes in memory.
QString profile_value(const QByteArray& contents, const QString& section, const QString& key,
                      const QString& default_value, int buffer_size = profile_buffer_size);
// Key and value null: the section is deleted. Value null: the key is deleted.
bool edit_profile(QByteArray& contents, const QString& section, const QString* key,
                  const QString* value);

}  // namespace zel
