#include "platform/posix/streams.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace quil {
namespace {

bool wouldBlock(int error) {
    return error == EAGAIN || error == EWOULDBLOCK;
}

/// Waits until the descriptor can be used or has failed.
void waitFor(int descriptor, short events) {
    pollfd entry{descriptor, events, 0};
    while (poll(&entry, 1, -1) < 0 && errno == EINTR) {
    }
}

}  // namespace

std::size_t PosixInputStream::read(char* buffer, std::size_t capacity) {
    for (;;) {
        const ssize_t count = ::read(descriptor_, buffer, capacity);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (wouldBlock(errno)) {
            waitFor(descriptor_, POLLIN);
        } else if (errno != EINTR) {
            return 0;
        }
    }
}

void PosixOutputStream::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (wouldBlock(errno)) {
            waitFor(descriptor_, POLLOUT);
        } else if (errno != EINTR) {
            return;
        }
    }
}

void secureStandardStreams() {
    // The system hands out the lowest free number, so each of the three is filled in turn.
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(standard, F_GETFD) < 0 && errno == EBADF) open("/dev/null", O_RDWR);
    }
    // A handler and not SIG_IGN: an ignored signal would stay ignored in the programs that we
    // launch, a handled one goes back to its default there.
    struct sigaction action {};
    action.sa_handler = [](int) {};
    action.sa_flags = SA_RESTART;
    sigaction(SIGPIPE, &action, nullptr);
}

}  // namespace quil
