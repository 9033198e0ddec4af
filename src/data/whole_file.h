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

// What a write came to: true when every step went through; otherwise the errno of the step that
// failed and the file it failed on, for the message or the log that says why.
struct Written {
    int error = 0;
    QString path;
    operator bool() const { return error == 0; }
};

// Replaces the file, or makes it. Fails with EACCES, before anything is written, when the file
// is read-only (its owner may not write it), as creating it anew would fail. `read_only`: the
// new file comes without write permission.
Written replace_whole_file(const QString& path, const QByteArray& bytes, bool read_only = false);

// Several files replaced together: every new file is written and synchronised beside its old
// one before the first of them is renamed into place, so that a full disk or a failed write
// changes none of them; a rename that fails puts back the old files that were already renamed
// over, so that a pair (a patient file and its companion) is never left mismatched.
class WholeFileReplacement {
public:
    WholeFileReplacement() = default;
    ~WholeFileReplacement();  // removes what was written and not put in place
    WholeFileReplacement(const WholeFileReplacement&) = delete;
    WholeFileReplacement& operator=(const WholeFileReplacement&) = delete;

    // Writes the new contents of `path` to its temporary file. The new file takes the old
    // one's permissions, or the console's creation mode for a file that is new; `read_only`:
    // without write permission, whatever the old one had.
    bool write(const QString& path, const QByteArray& bytes, bool read_only = false);
    // The temporary file that holds the new contents of the k-th file written.
    QString written_path(size_t k) const { return staged.at(k).temporary; }
    // Renames each file into place, in the order written.
    bool commit();
    // The step that failed.
    const Written& result() const { return outcome; }
    int error() const { return outcome.error; }

private:
    // What became of the old file when the new one was renamed into place: there was none,
    // it stands under the temporary name until every file is in place, or it is gone.
    enum class Old { none, kept, gone };
    struct Staged {
        QString path, temporary;
        Old old = Old::gone;
    };
    bool failed(int error, const QString& path);
    // Puts the old files back over those already placed, and fails with `error`.
    bool undo(std::vector<Staged>& placed, int error, const QString& path);
    std::vector<Staged> staged;
    Written outcome;
};

// For a file that a library writes itself: a name beside `path` for it to write to, and the
// step that synchronises it and renames it over `path`, with the old file's permissions or
// without those of other users. The old file as it was when a step fails.
QString temporary_name(const QString& path);
Written put_in_place(const QString& temporary, const QString& path);

// Text as the console's files hold it: Latin-1, each line ended by CR LF. False when a
// character has no Latin-1 code, so that nothing is written that would read back otherwise.
bool latin1_lines(const QStringList& lines, QByteArray& bytes);

}  // namespace zel
