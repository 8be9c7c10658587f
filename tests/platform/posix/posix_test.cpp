#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <future>
#include <regex>
#include <string>
#include <thread>

#include "platform/posix/clock.h"
#include "platform/posix/streams.h"
#include "platform/posix/threads.h"

namespace quil {
namespace {

struct Pipe {
    int reader = -1;
    int writer = -1;

    explicit Pipe(int flags) {
        int ends[2];
        if (::pipe(ends) != 0) return;
        for (const int end : ends) {
            fcntl(end, F_SETFD, FD_CLOEXEC);
            fcntl(end, F_SETFL, fcntl(end, F_GETFL) | flags);
        }
        reader = ends[0];
        writer = ends[1];
    }
    ~Pipe() {
        close(reader);
        close(writer);
    }
    void close(int& end) {
        if (end >= 0) ::close(end);
        end = -1;
    }
};

std::string readAll(InputStream& input) {
    std::string text;
    char buffer[7000];
    while (const std::size_t count = input.read(buffer, sizeof buffer)) text.append(buffer, count);
    return text;
}

TEST(PosixStreams, SignalsDoNotEndWaiting) {
    Pipe pipe(0);
    struct sigaction action {};
    struct sigaction previous {};
    action.sa_handler = [](int) {};  // without SA_RESTART: the system call returns EINTR
    sigaction(SIGUSR1, &action, &previous);
    std::promise<pthread_t> reading;
    std::string received;
    std::thread reader([&] {
        reading.set_value(pthread_self());
        PosixInputStream input(pipe.reader);
        received = readAll(input);
    });
    const pthread_t thread = reading.get_future().get();
    for (int i = 0; i < 100; ++i) pthread_kill(thread, SIGUSR1);
    PosixOutputStream(pipe.writer).write("after");
    pipe.close(pipe.writer);
    reader.join();
    sigaction(SIGUSR1, &previous, nullptr);
    EXPECT_EQ(received, "after");
}

// In a process of its own, for it closes its standard streams.
TEST(PosixStreams, ClosedStandardStreamsDoNoHarm) {
    const auto child = [] {
        close(STDIN_FILENO);
        close(STDOUT_FILENO);
        secureStandardStreams();
        const int opened = open("/dev/zero", O_RDONLY);
        if (opened <= STDERR_FILENO) _exit(1);  // would receive what is written to standard output
        char buffer[8];
        if (PosixInputStream(STDIN_FILENO).read(buffer, sizeof buffer) != 0) _exit(2);
        PosixOutputStream(STDOUT_FILENO).write("lost");

        Pipe pipe(0);
        pipe.close(pipe.reader);
        PosixOutputStream(pipe.writer).write("nobody reads this");
        _exit(0);
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0), "");
}

TEST(PosixThreads, AreNamedAndAwaitedWithWhatTheyStart) {
    std::atomic<int> ended = 0;
    std::string name(16, '\0');
    {
        PosixThreads threads;
        threads.startThread("quil.request-loop", QualityOfService::userInitiated, [&] {
            pthread_getname_np(pthread_self(), name.data(), name.size());
            threads.startThread("inner", QualityOfService::standard, [&] { ++ended; });
            ++ended;
        });
    }
    EXPECT_EQ(ended, 2);
    EXPECT_EQ(std::string(name.c_str()), "quil.request-lo");
}

TEST(PosixThreads, MainRunLoopEndsAlsoWhenStoppedBefore) {
    PosixThreads threads;
    threads.startThread("stopper", QualityOfService::standard, [&] { threads.stopMainRunLoop(); });
    threads.runMainRunLoop();
    threads.runMainRunLoop();
}

TEST(PosixClock, UuidsAreRandomAndWellFormed) {
    PosixClock clock;
    const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    const std::string uuid = clock.uuidString();
    EXPECT_TRUE(std::regex_match(uuid, form)) << uuid;
    EXPECT_NE(uuid, clock.uuidString());
}

}  // namespace
}  // namespace quil
