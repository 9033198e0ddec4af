#pragma once
// A file that grows by appending: the curve file, the logs. Each piece goes to the system in
// one call and is checked, so that a full disk or a vanished share is reported at the line it
// struck, and a line that only partly reached the disk is cut off again: the file holds whole
// lines only.
#include <sys/types.h>

#include <QByteArray>
#include <QString>
#include <memory>

namespace zel {

class AppendFile {
public:
    enum class Start { append, anew };

    AppendFile(QString path, const char* source);
    // Closes without a report; a file kept synchronised is synchronised first.
    ~AppendFile();
    AppendFile(const AppendFile&) = delete;
    AppendFile& operator=(const AppendFile&) = delete;

    // Each raises the file system's failure (see file_fault.h).
    void open(Start start = Start::append);
    void append(const QByteArray& bytes);
    // From now on every `pieces`-th piece appended is synchronised with the disk (fdatasync) by a
    // thread of the file's own, so that a power cut loses at most that many pieces and the
    // writer never waits for the disk; a failed synchronisation is raised by the next append.
    // Closing then synchronises what is left.
    void keep_synchronised(int pieces);
    // Waits for the synchronisation under way, if any; for tests of what it found.
    void settle();
    // Closes the file; a failure that the system reports only now is raised.
    void close();

    bool isOpen() const { return fd >= 0; }
    int handle() const { return fd; }
    const QString& path() const { return file_path; }

    // The routine named in the report of a failure.
    const char* source;

private:
    class Synchroniser;

    [[noreturn]] void fail(int error);
    // The file written is still the one at its path: a removed folder or a share taken away
    // leaves the handle writing into a file that nobody will ever find.
    void check_still_in_place();
    // Ends the synchronising thread and takes the last of the file to the disk: 0 or errno.
    int finish_synchronising();

    QString file_path;
    QByteArray native_path;
    int fd = -1;
    off_t length = 0;
    dev_t device = 0;
    ino_t inode = 0;
    std::unique_ptr<Synchroniser> synchroniser;
    int pieces_per_sync = 0;
    int pieces_unsynchronised = 0;
};

}  // namespace zel
