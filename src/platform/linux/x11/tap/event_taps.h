#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/event_taps.h"
#include "platform/linux/x11/tap/run_loop.h"

namespace quil::linux_platform {

/// Event taps on the X server's recording. Location, placement and options are as those of a tap
/// that only listens, whatever they say.
class X11EventTaps : public EventTaps {
  public:
    EventTapRef createTap(std::uint32_t location, std::uint32_t placement, std::uint32_t options,
                          std::uint64_t mask, EventTapCallback callback) override;
    void enableTap(const EventTapRef& tap, bool enable) override;
    void invalidateTap(const EventTapRef& tap) override;
    void flushTap(const EventTapRef& tap) override;
    RunLoopSourceRef createRunLoopSource(const EventTapRef& tap) override;
    RunLoopRef currentRunLoop() override;
    void addSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) override;
    void removeSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) override;
    void invalidateSource(const RunLoopSourceRef& source) override;
    void runCurrentRunLoop() override;
    void stopRunLoop(const RunLoopRef& runLoop) override;
    /// In a callback: whether it was so when the event happened. Elsewhere: false.
    bool isSecureEventInputEnabled() override;

  private:
    std::shared_ptr<TapRunLoop> loopOfThread();
    void wakeLoops();

    std::mutex lock_;
    /// Loops live as long as they are referred to or run.
    std::map<std::thread::id, std::weak_ptr<TapRunLoop>> loops_;
};

}  // namespace quil::linux_platform
