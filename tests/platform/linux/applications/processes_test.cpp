#include "platform/linux/applications/processes.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

namespace quil::linux_platform {
namespace {

/// What is asked of processes that end meanwhile is empty in the end, and never an exception.
TEST(Processes, MayEndWhileTheyAreLookedAt) {
    const auto before = std::signal(SIGCHLD, SIG_IGN);  // the kernel takes them away at once
    for (int i = 0; i < 100; ++i) {
        const pid_t child = fork();
        if (child == 0) _exit(0);
        ASSERT_GT(child, 0);
        while (!threadsOf(child).empty() || !argumentsOf(child).empty()) {
            processesOfProgram(child);
        }
    }
    std::signal(SIGCHLD, before);
}

}  // namespace
}  // namespace quil::linux_platform
