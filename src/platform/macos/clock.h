#pragma once

#include "platform/posix/clock.h"

namespace quil::macos {

/// Foundation's clocks. The uptime is NSProcessInfo's: like the timestamps of input events, and
/// unlike CLOCK_MONOTONIC on this system, it stands still while the machine sleeps.
class MacClock : public PosixClock {
  public:
    double timeIntervalSince1970() override;
    double systemUptime() override;
    std::string uuidString() override;
};

}  // namespace quil::macos
