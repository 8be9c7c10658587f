#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace quil::linux_platform {

/// Watches processes until they have processed what they were sent, as far as that shows from
/// outside: they are idle, or, for those that never are (an animation, a terminal that prints),
/// each of their threads has slept many times, as it does when its queue is empty.
class IdleWatch {
  public:
    using Clock = std::chrono::steady_clock;

    explicit IdleWatch(std::vector<std::int32_t> processes) : processes_(std::move(processes)) {}

    /// Whether that was so before the deadline. A thread that never sleeps, while the processes'
    /// first threads do, is waited for 2 s at the most. Processes that cannot be looked at are
    /// given 0.3 s.
    bool wait(Clock::time_point deadline);

    /// Whether all of them were idle at once before the deadline: for processes that hand
    /// something on to each other, and each sleep in between.
    bool waitForRest(Clock::time_point deadline);

  private:
    bool look();

    std::vector<std::int32_t> processes_;
    bool isVisible_ = false;
    /// What all threads had run at the last look; absent while one of them ran.
    std::uint64_t cpuTime_ = 0;
    int idleSamples_ = 0;
    /// By thread: looks that have found it asleep.
    std::map<std::int32_t, int> sleeps_;
};

}  // namespace quil::linux_platform
