#include "platform/linux/applications/idle_watch.h"

#include <algorithm>
#include <thread>

#include "platform/linux/applications/processes.h"

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLookInterval{4};
/// Processes that have slept through this many looks are at rest.
constexpr int kIdleSamples = 5;
/// A thread that is never at rest has gone through its loop when it was found asleep so often.
constexpr int kSleepsOfBusyThread = 10;
constexpr milliseconds kBusyThreadTimeout{2000};
/// For processes that cannot be looked at.
constexpr milliseconds kUnreadableProcessDelay{300};

}  // namespace

bool IdleWatch::look() {
    std::uint64_t cpuTime = 0;
    bool allSleep = true;
    isVisible_ = false;
    for (const std::int32_t process : processes_) {
        for (const ThreadActivity& thread : threadsOf(process)) {
            isVisible_ = true;
            cpuTime += thread.cpuTime;
            allSleep = allSleep && thread.isSleeping;
            int& sleeps = sleeps_[thread.id];
            if (thread.isSleeping) ++sleeps;
        }
    }
    idleSamples_ = allSleep && cpuTime == cpuTime_ ? idleSamples_ + 1 : 0;
    cpuTime_ = cpuTime;
    return idleSamples_ >= kIdleSamples;
}

bool IdleWatch::waitForRest(Clock::time_point deadline) {
    while (!look()) {
        if (Clock::now() >= deadline) return false;
        std::this_thread::sleep_for(kLookInterval);
    }
    return true;
}

bool IdleWatch::wait(Clock::time_point deadline) {
    const auto began = Clock::now();
    const auto hasSlept = [](const auto& entry) { return entry.second >= kSleepsOfBusyThread; };
    while (!look()) {
        const auto now = Clock::now();
        if (now >= deadline) return false;
        if (!isVisible_) {
            std::this_thread::sleep_until(std::min(deadline, now + kUnreadableProcessDelay));
            return true;
        }
        if (std::ranges::all_of(sleeps_, hasSlept)) return true;
        const bool firstThreadsSleep = std::ranges::all_of(processes_, [&](std::int32_t process) {
            return sleeps_[process] >= kSleepsOfBusyThread;
        });
        if (firstThreadsSleep && now >= began + kBusyThreadTimeout) return true;
        std::this_thread::sleep_for(kLookInterval);
    }
    return true;
}

}  // namespace quil::linux_platform
