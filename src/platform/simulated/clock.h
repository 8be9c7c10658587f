#pragma once

#include <chrono>
#include <mutex>

namespace quil::simulated {

/// The desktop's clock. Virtual at first: time stands still but for sleeps, which pass at once.
/// May be used from any thread.
class DesktopClock {
  public:
    /// Lets time pass as it really does, from now on; sleeps wait.
    void useRealTime();

    /// A time, since the desktop started, or a length of time. Whole nanoseconds, so that times add
    /// up exactly and are reached exactly.
    using Nanoseconds = std::chrono::nanoseconds;
    /// Rounds to the nearest one; what is out of range becomes the longest time.
    static Nanoseconds nanoseconds(double seconds);

    Nanoseconds passed() const;
    /// `passed` in seconds.
    double now() const;
    bool isVirtual() const;
    /// Lets that much time pass: waits, or moves the virtual clock, at most to the end of its
    /// range.
    void pass(Nanoseconds time);

    /// The wall clock when the desktop started, seconds since 1970; 1,700,000,000 at first.
    void setWallClockAtStart(double seconds);
    double wallClock() const;
    /// How long the system had been up when the desktop started, in seconds; 1,000 at first.
    void setUptimeAtStart(double seconds);
    double uptime() const;

  private:
    using RealClock = std::chrono::steady_clock;

    Nanoseconds passedLocked() const;
    double nowLocked() const;

    mutable std::mutex mutex_;
    Nanoseconds virtualNow_{0};
    double wallClockAtStart_ = 1'700'000'000;
    double uptimeAtStart_ = 1000;
    bool isReal_ = false;
    RealClock::time_point realStart_;  // when `virtualNow_` had passed
};

}  // namespace quil::simulated
