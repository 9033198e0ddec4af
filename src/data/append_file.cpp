#include "data/append_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "data/file_access.h"
#include "data/file_fault.h"

namespace zel {

namespace {

int synchronise(int fd) {
    while (::fdatasync(fd) != 0)
        if (errno != EINTR) return errno;
    return 0;
}

}  // namespace

// Takes the file to the disk when asked, off the writer's thread: a synchronisation costs
// milliseconds, at times tens of them, which the thread that handles the frame ending a hold
// can not spend.
class AppendFile::Synchroniser {
  public:
    explicit Synchroniser(int fd) : thread([this, fd] { run(fd); }) {}
    ~Synchroniser() {
        {
            const std::lock_guard<std::mutex> hold(lock);
            stopping = true;
        }
        woken.notify_all();
        thread.join();
    }
    void request() {
        {
            const std::lock_guard<std::mutex> hold(lock);
            requested = true;
        }
        woken.notify_all();
    }
    void settle() {
        std::unique_lock<std::mutex> hold(lock);
        woken.wait(hold, [this] { return !requested && !running; });
    }
    // The errno of a failed synchronisation, once.
    int failure() { return error.exchange(0, std::memory_order_relaxed); }

  private:
    void run(int fd) {
        std::unique_lock<std::mutex> hold(lock);
        for (;;) {
            woken.wait(hold, [this] { return requested || stopping; });
            if (!requested) return;
            requested = false;
            running = true;
            hold.unlock();
            const int result = synchronise(fd);
            hold.lock();
            running = false;
            if (result != 0) error.store(result, std::memory_order_relaxed);
            woken.notify_all();
        }
    }

    std::mutex lock;
    std::condition_variable woken;
    bool requested = false, running = false, stopping = false;
    std::atomic<int> error{0};
    std::thread thread;
};

AppendFile::AppendFile(QString path, const char* source_)
    : source(source_), file_path(std::move(path)), native_path(QFile::encodeName(file_path)) {}

AppendFile::~AppendFile() {
    if (fd < 0) return;
    finish_synchronising();
    ::close(fd);
}

void AppendFile::fail(int error) { raise_file_fault(error, source, file_path); }

void AppendFile::open(Start start) {
    if (fd >= 0) return;
    const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (start == Start::anew ? O_TRUNC : O_APPEND);
    const int opened = ::open(native_path.constData(), flags, file_creation_mode);
    if (opened < 0) fail(errno);
    struct stat info {};
    if (::fstat(opened, &info) != 0) {
        const int error = errno;
        ::close(opened);
        fail(error);
    }
    fd = opened;
    length = info.st_size;
    device = info.st_dev;
    inode = info.st_ino;
}

void AppendFile::keep_synchronised(int pieces) {
    if (fd < 0) fail(EBADF);
    pieces_per_sync = pieces;
    if (!synchroniser) synchroniser = std::make_unique<Synchroniser>(fd);
}

void AppendFile::append(const QByteArray& bytes) {
    if (fd < 0) fail(EBADF);
    if (const int error = write_all(fd, bytes.constData(), static_cast<size_t>(bytes.size()))) {
        // What reached the file of this piece is taken back, where the system lets it.
        static_cast<void>(::ftruncate(fd, length) == 0);
        fail(error);
    }
    length += bytes.size();
    check_still_in_place();
    if (!synchroniser) return;
    if (const int error = synchroniser->failure()) fail(error);
    if (++pieces_unsynchronised >= pieces_per_sync) {
        pieces_unsynchronised = 0;
        synchroniser->request();
    }
}

void AppendFile::check_still_in_place() {
    struct stat info {};
    if (::stat(native_path.constData(), &info) != 0) fail(errno == ENOTDIR ? ENOENT : errno);
    if (info.st_dev != device || info.st_ino != inode) fail(ENOENT);
}

void AppendFile::settle() {
    if (synchroniser) synchroniser->settle();
}

int AppendFile::finish_synchronising() {
    if (!synchroniser) return 0;
    synchroniser->settle();
    int error = synchroniser->failure();
    synchroniser.reset();
    if (!error) error = synchronise(fd);
    return error;
}

void AppendFile::close() {
    if (fd < 0) return;
    int error = finish_synchronising();
    const int closing = fd;
    fd = -1;
    // A share may report a write that failed on its way to the disk only at the close.
    if (::close(closing) != 0 && errno != EINTR && !error) error = errno;
    if (error) fail(error);
}

}  // namespace zel
