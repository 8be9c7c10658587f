#include "platform/simulated/clock.h"

#include <cmath>
#include <thread>

namespace quil::simulated {
namespace {

/// Whole nanoseconds, so that many short sleeps add up exactly.
std::chrono::nanoseconds nanoseconds(double seconds) {
    return std::chrono::nanoseconds(std::llround(seconds * 1e9));
}

}  // namespace

void DesktopClock::useRealTime() {
    const std::lock_guard lock(mutex_);
    if (isReal_) return;
    isReal_ = true;
    realStart_ = RealClock::now();
}

double DesktopClock::now() const {
    const std::lock_guard lock(mutex_);
    return nowLocked();
}

void DesktopClock::pass(double seconds) {
    {
        const std::lock_guard lock(mutex_);
        if (!isReal_) {
            virtualNow_ += nanoseconds(seconds);
            return;
        }
    }
    std::this_thread::sleep_for(nanoseconds(seconds));
}

void DesktopClock::setWallClockAtStart(double seconds) {
    const std::lock_guard lock(mutex_);
    wallClockAtStart_ = seconds;
}

double DesktopClock::wallClock() const {
    const std::lock_guard lock(mutex_);
    return wallClockAtStart_ + nowLocked();
}

void DesktopClock::setUptimeAtStart(double seconds) {
    const std::lock_guard lock(mutex_);
    uptimeAtStart_ = seconds;
}

double DesktopClock::uptime() const {
    const std::lock_guard lock(mutex_);
    return uptimeAtStart_ + nowLocked();
}

double DesktopClock::nowLocked() const {
    std::chrono::nanoseconds passed = virtualNow_;
    if (isReal_) passed += RealClock::now() - realStart_;
    return static_cast<double>(passed.count()) / 1e9;
}

}  // namespace quil::simulated
