#pragma once

#include <cstdint>
#include <string>

namespace quil {

/// Clocks, pauses and identifiers.
class Clock {
  public:
    virtual ~Clock() = default;

    /// The wall clock: seconds since 1970-01-01 00:00 UTC.
    virtual double timeIntervalSince1970() = 0;
    /// Seconds since the system started; the time base of event timestamps. Never goes back.
    virtual double systemUptime() = 0;
    /// Blocks the calling thread for that many microseconds.
    virtual void sleepMicroseconds(std::uint32_t microseconds) = 0;
    /// One step, of that many microseconds, of a wait that ends early when another thread brings
    /// something, and else by the uptime `end`. A clock that stands still takes several steps at
    /// once when nothing can come in between.
    virtual void sleepStep(std::uint32_t microseconds, [[maybe_unused]] double end) {
        sleepMicroseconds(microseconds);
    }
    /// A new random UUID, 36 characters, upper case.
    virtual std::string uuidString() = 0;
};

}  // namespace quil
