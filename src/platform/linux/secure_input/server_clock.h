#pragma once

#include <chrono>
#include <cstdint>
#include <cstdlib>

namespace quil::linux_platform {

/// The system's uptime, as the X server and the buses count it.
using TapTime = std::chrono::steady_clock::time_point;

/// The system's uptime now, in milliseconds.
inline std::uint64_t uptimeMilliseconds() {
    using std::chrono::milliseconds;
    const auto uptime = TapTime::clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<milliseconds>(uptime).count());
}

/// Turns the X server's times, milliseconds cut to 32 bits, into the system's uptime. A server on
/// this machine counts the uptime itself; one elsewhere counts from a moment of its own.
class ServerClock {
  public:
    /// `serverTime` is the server's time now, `uptimeMs` the system's.
    ServerClock(std::uint32_t serverTime, std::uint64_t uptimeMs)
        : difference_(
              static_cast<std::int32_t>(static_cast<std::uint32_t>(uptimeMs) - serverTime)) {
        // So little is the delay of the reply, not another clock.
        if (std::abs(difference_) < 1000) difference_ = 0;
    }

    /// The uptime at that time, in nanoseconds. The time lies less than 24 days from now, so it
    /// does not matter how often the server's count has wrapped around.
    std::uint64_t uptimeNanoseconds(std::uint32_t serverTime, std::uint64_t uptimeMs) const {
        const std::uint32_t time = serverTime + static_cast<std::uint32_t>(difference_);
        const auto age = static_cast<std::int32_t>(static_cast<std::uint32_t>(uptimeMs) - time);
        return (uptimeMs - static_cast<std::uint64_t>(std::int64_t{age})) * 1'000'000;
    }

    /// The uptime at that time, relative to the current time.
    TapTime timeOf(std::uint32_t serverTime) const {
        return TapTime(
            std::chrono::nanoseconds(uptimeNanoseconds(serverTime, uptimeMilliseconds())));
    }

  private:
    std::int32_t difference_;
};

}  // namespace quil::linux_platform
