#pragma once

#include "platform/clock.h"

namespace quil {

/// The system's clocks. The uptime is CLOCK_MONOTONIC: the X server stamps input events with that
/// clock (in milliseconds, cut to 32 bits), so the two can be compared. Unlike CLOCK_BOOTTIME it
/// stands still while the machine sleeps, as event times do.
class PosixClock : public Clock {
  public:
    double timeIntervalSince1970() override;
    double systemUptime() override;
    void sleepMicroseconds(std::uint32_t microseconds) override;
    std::string uuidString() override;
};

}  // namespace quil
