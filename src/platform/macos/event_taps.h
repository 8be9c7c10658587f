#pragma once

#include "platform/event_taps.h"

namespace quil::macos {

/// The Quartz event services, for listening, and Core Foundation's run loops.
class MacEventTaps : public EventTaps {
  public:
    EventTapRef createTap(std::uint32_t location, std::uint32_t placement, std::uint32_t options,
                          std::uint64_t mask, EventTapCallback callback) override;
    void enableTap(const EventTapRef& tap, bool enable) override;
    void invalidateTap(const EventTapRef& tap) override;
    RunLoopSourceRef createRunLoopSource(const EventTapRef& tap) override;
    RunLoopRef currentRunLoop() override;
    void addSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) override;
    void removeSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) override;
    void invalidateSource(const RunLoopSourceRef& source) override;
    void runCurrentRunLoop() override;
    void stopRunLoop(const RunLoopRef& runLoop) override;
    bool isSecureEventInputEnabled() override;
};

}  // namespace quil::macos
