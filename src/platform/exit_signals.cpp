#include "platform/exit_signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <cerrno>
#include <csignal>

namespace zel {

const int ExitSignals::caught[3] = {SIGTERM, SIGHUP, SIGINT};

namespace {

int pipe_ends[2] = {-1, -1};

// Only what is safe in a signal handler: one write of one byte, errno kept.
extern "C" void write_signal_number(int signal_number) {
    const int saved = errno;
    const char number = static_cast<char>(signal_number);
    [[maybe_unused]] const ssize_t written = ::write(pipe_ends[1], &number, 1);
    errno = saved;
}

}  // namespace

ExitSignals::ExitSignals(std::function<void(int)> on_signal_) : on_signal(std::move(on_signal_)) {
    if (::pipe2(pipe_ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        pipe_ends[0] = pipe_ends[1] = -1;
        return;
    }
    notifier = new QSocketNotifier(pipe_ends[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] { read_pipe(); });
    struct sigaction action {};
    action.sa_handler = write_signal_number;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signal_number : caught) ::sigaction(signal_number, &action, nullptr);
}

ExitSignals::~ExitSignals() {
    for (const int signal_number : caught) ::signal(signal_number, SIG_DFL);
    delete notifier;
    for (int& end : pipe_ends) {
        if (end >= 0) ::close(end);
        end = -1;
    }
}

void ExitSignals::read_pipe() {
    char number = 0;
    while (::read(pipe_ends[0], &number, 1) == 1)
        if (on_signal) on_signal(static_cast<unsigned char>(number));
}

}  // namespace zel
