#include "pty_port.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace zelsim {

namespace {
std::string failure(const char* what) { return std::string(what) + ": " + std::strerror(errno); }
}  // namespace

PtyPort::~PtyPort() { close(); }

std::string PtyPort::open() {
    master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (master < 0) return failure("posix_openpt");
    if (grantpt(master) != 0 || unlockpt(master) != 0) return failure("unlockpt");
    const char* name = ptsname(master);
    if (!name) return failure("ptsname");
    far_end = name;
    held_far_end = ::open(name, O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (held_far_end < 0) return failure(name);
    termios mode{};
    if (tcgetattr(held_far_end, &mode) != 0) return failure("tcgetattr");
    cfmakeraw(&mode);
    cfsetispeed(&mode, B9600);
    cfsetospeed(&mode, B9600);
    if (tcsetattr(held_far_end, TCSANOW, &mode) != 0) return failure("tcsetattr");
    return {};
}

std::string PtyPort::link_as(const std::string& link_path) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::create_directories(fs::path(link_path).parent_path(), error);
    if (error) return link_path + ": " + error.message();
    if (fs::is_symlink(fs::symlink_status(link_path, error))) fs::remove(link_path, error);
    fs::create_symlink(far_end, link_path, error);
    if (error) return link_path + ": " + error.message();
    link = link_path;
    return {};
}

void PtyPort::close() {
    if (!link.empty()) {
        std::error_code ignored;
        // Only our own link goes: a later run may have taken the name meanwhile.
        if (std::filesystem::read_symlink(link, ignored) == far_end)
            std::filesystem::remove(link, ignored);
        link.clear();
    }
    if (held_far_end >= 0) ::close(held_far_end);
    if (master >= 0) ::close(master);
    held_far_end = master = -1;
}

std::vector<uint8_t> PtyPort::read_available() {
    std::vector<uint8_t> bytes;
    uint8_t buffer[256];
    for (;;) {
        const ssize_t n = ::read(master, buffer, sizeof buffer);
        if (n <= 0) break;
        bytes.insert(bytes.end(), buffer, buffer + n);
    }
    return bytes;
}

void PtyPort::write(const std::vector<uint8_t>& bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(master, bytes.data() + done, bytes.size() - done);
        if (n <= 0) break;
        done += static_cast<size_t>(n);
    }
}

}  // namespace zelsim
