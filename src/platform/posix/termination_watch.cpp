#include "platform/posix/termination_watch.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <utility>

namespace quil {
namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};

/// Where the handler, which knows nothing else, writes the signal's number.
std::atomic<int> signalPipe{-1};

void handle(int number) {
    const int error = errno;
    const auto byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = write(signalPipe, &byte, 1);
    errno = error;
}

void setHandler(void (*from)(int), void (*to)(int)) {
    for (const int number : kSignals) {
        struct sigaction action {};
        if (sigaction(number, nullptr, &action) != 0 || action.sa_handler != from) continue;
        action = {};
        action.sa_handler = to;
        action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
        sigaction(number, &action, nullptr);
    }
}

}  // namespace

TerminationWatch::TerminationWatch(std::function<void()> cleanUp) {
    if (pipe(pipe_) != 0) return;
    for (const int end : pipe_) fcntl(end, F_SETFD, FD_CLOEXEC);
    thread_ = std::thread([input = pipe_[0], cleanUp = std::move(cleanUp)] {
        unsigned char number = 0;
        ssize_t count = 0;
        while ((count = read(input, &number, 1)) < 0 && errno == EINTR) {
        }
        if (count != 1) return;
        cleanUp();
        kill(getpid(), number);
    });
    signalPipe = pipe_[1];
    setHandler(SIG_DFL, handle);
}

TerminationWatch::~TerminationWatch() {
    if (!thread_.joinable()) return;
    setHandler(handle, SIG_DFL);
    close(pipe_[1]);
    thread_.join();
    close(pipe_[0]);
}

}  // namespace quil
