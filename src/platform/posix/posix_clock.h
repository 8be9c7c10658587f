#pragma once

#include "platform/clock.h"

namespace quil {

/// The system's clocks. The uptime is CLOCK_MONOTONIC, which X servers on Linux also take their
/// event times from.
class PosixClock : public Clock {
  public:
    double timeIntervalSince1970() override;
    double systemUptime() override;
    void sleepMicroseconds(std::uint32_t microseconds) override;
    std::string uuidString() override;
};

}  // namespace quil
