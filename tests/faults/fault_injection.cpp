// Interposed C library calls (see fault_injection.h). Nothing here may allocate on the way of a
// call that is not watched more than a lookup needs: gtest's own output goes through write.
#undef _FORTIFY_SOURCE
#include "faults/fault_injection.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <mutex>
#include <string_view>
#include <utility>

namespace zel::test {
namespace {

struct State {
    std::mutex lock;
    bool armed = false;
    Call call = Call::open;
    int error = 0;
    std::string part;
    int failed = 0;
    bool shortened = false;
    std::array<std::string, 4096> paths;  // of the open files, by handle
};

State& state() {
    static State s;
    return s;
}

template <class F>
F real(const char* name) {
    return reinterpret_cast<F>(::dlsym(RTLD_NEXT, name));
}

// True, with errno set, when this call is to fail.
bool strikes(Call call, const char* path) {
    State& s = state();
    std::lock_guard<std::mutex> hold(s.lock);
    if (!s.armed || s.call != call || path == nullptr) return false;
    const std::string_view text(path), part(s.part);
    if (part.ends_with('$') ? !text.ends_with(part.substr(0, part.size() - 1))
                            : text.find(part) == std::string_view::npos)
        return false;
    ++s.failed;
    errno = s.error;
    return true;
}

bool strikes(Call call, int fd) {
    std::string path;
    {
        State& s = state();
        std::lock_guard<std::mutex> hold(s.lock);
        if (!s.armed || fd < 0 || static_cast<size_t>(fd) >= s.paths.size()) return false;
        path = s.paths[static_cast<size_t>(fd)];
    }
    return !path.empty() && strikes(call, path.c_str());
}

int opened(int fd, const char* path) {
    if (fd >= 0 && static_cast<size_t>(fd) < state().paths.size()) {
        std::lock_guard<std::mutex> hold(state().lock);
        state().paths[static_cast<size_t>(fd)] = path;
    }
    return fd;
}

mode_t mode_of(int flags, va_list args) {
    return (flags & O_CREAT) || (flags & __O_TMPFILE) == __O_TMPFILE ? va_arg(args, mode_t) : 0;
}

}  // namespace

void inject(Call call, int error, const std::string& path_part) {
    std::lock_guard<std::mutex> hold(state().lock);
    state().armed = true;
    state().call = call;
    state().error = error;
    state().part = path_part;
    state().failed = 0;
    state().shortened = false;
}

void clear_faults() {
    std::lock_guard<std::mutex> hold(state().lock);
    state().armed = false;
}

int failures() {
    std::lock_guard<std::mutex> hold(state().lock);
    return state().failed;
}

}  // namespace zel::test

using namespace zel::test;

extern "C" {

int openat(int dirfd, const char* path, int flags, ...) {
    va_list args;
    va_start(args, flags);
    const mode_t mode = mode_of(flags, args);
    va_end(args);
    if (strikes(Call::open, path)) return -1;
    static const auto call = real<int (*)(int, const char*, int, ...)>("openat");
    return opened(call(dirfd, path, flags, mode), path);
}

int open(const char* path, int flags, ...) {
    va_list args;
    va_start(args, flags);
    const mode_t mode = mode_of(flags, args);
    va_end(args);
    return openat(AT_FDCWD, path, flags, mode);
}

// On this system the 64-bit forms are the same calls.
int open64(const char* path, int flags, ...) __attribute__((alias("open")));
int openat64(int dirfd, const char* path, int flags, ...) __attribute__((alias("openat")));

ssize_t write(int fd, const void* data, size_t size) {
    static const auto call = real<ssize_t (*)(int, const void*, size_t)>("write");
    if (strikes(Call::write, fd)) return -1;
    if (strikes(Call::short_write, fd)) {
        const int error = errno;
        bool first = false;
        {
            std::lock_guard<std::mutex> hold(state().lock);
            first = !std::exchange(state().shortened, true);
        }
        errno = error;
        if (!first || size < 2) return -1;
        return call(fd, data, size / 2);
    }
    return call(fd, data, size);
}

int fsync(int fd) {
    static const auto call = real<int (*)(int)>("fsync");
    return strikes(Call::sync, fd) ? -1 : call(fd);
}

int fdatasync(int fd) {
    static const auto call = real<int (*)(int)>("fdatasync");
    return strikes(Call::sync, fd) ? -1 : call(fd);
}

int close(int fd) {
    const bool fails = strikes(Call::close, fd);
    const int error = errno;
    if (fd >= 0 && static_cast<size_t>(fd) < state().paths.size()) {
        std::lock_guard<std::mutex> hold(state().lock);
        state().paths[static_cast<size_t>(fd)].clear();
    }
    static const auto call = real<int (*)(int)>("close");
    // The handle is closed in any case, as the system does when it reports a late failure.
    const int result = call(fd);
    if (!fails) return result;
    errno = error;
    return -1;
}

int rename(const char* from, const char* to) {
    static const auto call = real<int (*)(const char*, const char*)>("rename");
    return strikes(Call::rename, to) ? -1 : call(from, to);
}

// The exchange that keeps an old file for its way back is a rename too.
int renameat2(int from_dir, const char* from, int to_dir, const char* to, unsigned flags) {
    static const auto call =
        real<int (*)(int, const char*, int, const char*, unsigned)>("renameat2");
    return strikes(Call::rename, to) ? -1 : call(from_dir, from, to_dir, to, flags);
}

int mkdir(const char* path, mode_t mode) {
    static const auto call = real<int (*)(const char*, mode_t)>("mkdir");
    return strikes(Call::mkdir, path) ? -1 : call(path, mode);
}

}  // extern "C"
