#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "target/capture_target.h"

namespace quil {

/// One Glimpse capture.
struct GlimpseSession {
    /// The frontmost application and window when the capture started.
    CaptureTarget target;
    /// How many updates have been delivered.
    std::int64_t step = 0;
};

/// The captures in progress and those that were completed but never cancelled, by the id that the
/// host chose for them. Bounded: when there is one too many, the one started longest ago goes.
class GlimpseSessions {
  public:
    static constexpr std::size_t kMaximumSessions = 1000;

    /// Begins a capture at its first step, also when one of that id exists.
    void start(const std::string& requestId, CaptureTarget target);
    /// The capture; null when there is none of that id. Valid until the next change.
    const GlimpseSession* find(const std::string& requestId) const;
    /// Counts a delivered update.
    void advance(const std::string& requestId);
    /// Forgets the capture, if there is one of that id.
    void cancel(const std::string& requestId);

  private:
    struct Entry {
        GlimpseSession session;
        std::uint64_t startNumber = 0;
    };
    std::map<std::string, Entry> entries_;
    std::uint64_t startCount_ = 0;
};

}  // namespace quil
