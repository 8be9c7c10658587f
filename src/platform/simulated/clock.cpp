#include "platform/simulated/clock.h"

#include <algorithm>
#include <cmath>
#include <thread>

namespace quil::simulated {

DesktopClock::Nanoseconds DesktopClock::nanoseconds(double seconds) {
    const double count = std::round(seconds * 1e9);
    constexpr auto kLongest = Nanoseconds::max();
    if (count >= static_cast<double>(kLongest.count())) return kLongest;
    return Nanoseconds(static_cast<Nanoseconds::rep>(count));
}

void DesktopClock::useRealTime() {
    const std::lock_guard lock(mutex_);
    if (isReal_) return;
    isReal_ = true;
    realStart_ = RealClock::now();
}

DesktopClock::Nanoseconds DesktopClock::passed() const {
    const std::lock_guard lock(mutex_);
    return passedLocked();
}

double DesktopClock::now() const {
    const std::lock_guard lock(mutex_);
    return nowLocked();
}

bool DesktopClock::isVirtual() const {
    const std::lock_guard lock(mutex_);
    return !isReal_;
}

void DesktopClock::pass(Nanoseconds time) {
    {
        const std::lock_guard lock(mutex_);
        if (!isReal_) {
            virtualNow_ += std::min(time, Nanoseconds::max() - virtualNow_);
            return;
        }
    }
    std::this_thread::sleep_for(time);
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

DesktopClock::Nanoseconds DesktopClock::passedLocked() const {
    return isReal_ ? virtualNow_ + (RealClock::now() - realStart_) : virtualNow_;
}

double DesktopClock::nowLocked() const {
    return static_cast<double>(passedLocked().count()) / 1e9;
}

}  // namespace quil::simulated
