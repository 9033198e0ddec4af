#pragma once
// Files that are replaced whole are written to a temporary file beside them and renamed over
// the old one, so that a crash leaves the old file or the new one, never half of one. Every
// step is checked (create, write, synchronise, close, rename): a failed step removes the
// temporary file, and the old file stays byte for byte.
#include <QByteArray>
#include <QString>
#include <QStringList>
#include <vector>

namespace zel {

// False when the file can't be written: its folder is missing or closed to writing, the disk
// is full, or an existing file is read-only (its owner may not write it), as creating it anew
// would fail.
bool replace_whole_file(const QString& path, const QByteArray& bytes);

// Several files replaced together: every new file is written and synchronised beside its old
// one before the first of them is renamed into place, so that a full disk or a failed write
// changes none of them.
class WholeFileReplacement {
public:
    WholeFileReplacement() = default;
    ~WholeFileReplacement();  // removes what was written and not put in place
    WholeFileReplacement(const WholeFileReplacement&) = delete;
    WholeFileReplacement& operator=(const WholeFileReplacement&) = delete;

    // Writes the new contents of `path` to its temporary file. `read_only`: the new file
    // comes without write permission, whatever the old one had.
    bool write(const QString& path, const QByteArray& bytes, bool read_only = false);
    // The temporary file that holds the new contents of the k-th file written.
    QString written_path(size_t k) const { return staged.at(k).temporary; }
    // Renames each file into place, in the order written.
    bool commit();
    // The errno of the step that failed.
    int error() const { return last_error; }

private:
    struct Staged {
        QString path, temporary;
    };
    bool failed(int error);
    std::vector<Staged> staged;
    int last_error = 0;
};

// For a file that a library writes itself: a name beside `path` for it to write to, and the
// step that synchronises it and renames it over `path`. False, with the old file as it was,
// when a step fails.
QString temporary_name(const QString& path);
bool put_in_place(const QString& temporary, const QString& path);

// Text as the console's files hold it: Latin-1, each line ended by CR LF. False when a
// character has no Latin-1 code, so that nothing is written that would read back otherwise.
bool latin1_lines(const QStringList& lines, QByteArray& bytes);

}  // namespace zel
