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

    /// Seconds since the desktop started.
    double now() const;
    /// Lets that much time pass: waits, or moves the virtual clock.
    void pass(double seconds);

    /// The wall clock when the desktop started, seconds since 1970; 1,700,000,000 at first.
    void setWallClockAtStart(double seconds);
    double wallClock() const;
    /// How long the system had been up when the desktop started, in seconds; 1,000 at first.
    void setUptimeAtStart(double seconds);
    double uptime() const;

  private:
    using RealClock = std::chrono::steady_clock;

    double nowLocked() const;

    mutable std::mutex mutex_;
    std::chrono::nanoseconds virtualNow_{0};
    double wallClockAtStart_ = 1'700'000'000;
    double uptimeAtStart_ = 1000;
    bool isReal_ = false;
    RealClock::time_point realStart_;  // when `virtualNow_` had passed
};

}  // namespace quil::simulated
