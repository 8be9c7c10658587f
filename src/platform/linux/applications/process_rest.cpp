#include "platform/linux/applications/process_rest.h"

#include <algorithm>
#include <thread>

#include "platform/linux/applications/processes.h"

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLookInterval{4};
/// Processes that have slept through this many looks are at rest.
constexpr int kLooksAtRest = 5;
/// A thread that is never at rest has gone through its loop when it was found asleep so often.
constexpr int kSleepsOfRestless = 10;
constexpr milliseconds kBusyThreadTimeout{2000};
/// For processes that cannot be looked at.
constexpr milliseconds kBlindWait{300};

}  // namespace

bool ProcessRest::look() {
    std::uint64_t timeRun = 0;
    bool allSleep = true;
    isVisible_ = false;
    for (const std::int32_t process : processes_) {
        for (const ThreadActivity& thread : threadsOf(process)) {
            isVisible_ = true;
            timeRun += thread.timeRun;
            allSleep = allSleep && thread.isAsleep;
            int& sleeps = sleeps_[thread.id];
            if (thread.isAsleep) ++sleeps;
        }
    }
    looksAtRest_ = allSleep && timeRun == timeRun_ ? looksAtRest_ + 1 : 0;
    timeRun_ = timeRun;
    return looksAtRest_ >= kLooksAtRest;
}

bool ProcessRest::wait(Clock::time_point deadline) {
    const auto began = Clock::now();
    const auto hasSlept = [](const auto& entry) { return entry.second >= kSleepsOfRestless; };
    while (!look()) {
        const auto now = Clock::now();
        if (now >= deadline) return false;
        if (!isVisible_) {
            std::this_thread::sleep_until(std::min(deadline, now + kBlindWait));
            return true;
        }
        if (std::ranges::all_of(sleeps_, hasSlept)) return true;
        const bool firstThreadsSleep = std::ranges::all_of(processes_, [&](std::int32_t process) {
            return sleeps_[process] >= kSleepsOfRestless;
        });
        if (firstThreadsSleep && now >= began + kBusyThreadTimeout) return true;
        std::this_thread::sleep_for(kLookInterval);
    }
    return true;
}

}  // namespace quil::linux_platform
