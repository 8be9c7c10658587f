#include <gtest/gtest.h>
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

TEST(PosixStreams, SignalsDoNotEndWaiting) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    struct sigaction action {};
    struct sigaction previous {};
    action.sa_handler = [](int) {};  // without SA_RESTART: the system call returns EINTR
    sigaction(SIGUSR1, &action, &previous);
    std::promise<pthread_t> reading;
    std::string received(7, '\0');
    std::thread reader([&] {
        reading.set_value(pthread_self());
        received.resize(PosixInputStream(ends[0]).read(received.data(), received.size()));
    });
    const pthread_t thread = reading.get_future().get();
    for (int i = 0; i < 100; ++i) pthread_kill(thread, SIGUSR1);
    PosixOutputStream(ends[1]).write("after");
    reader.join();
    sigaction(SIGUSR1, &previous, nullptr);
    EXPECT_EQ(received, "after");
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

TEST(PosixClock, UuidsAreRandomAndWellFormed) {
    PosixClock clock;
    const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    const std::string uuid = clock.uuidString();
    EXPECT_TRUE(std::regex_match(uuid, form)) << uuid;
    EXPECT_NE(uuid, clock.uuidString());
}

}  // namespace
}  // namespace quil
