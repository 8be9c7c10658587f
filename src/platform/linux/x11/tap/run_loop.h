#pragma once

#include <poll.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/event_taps.h"
#include "platform/linux/x11/tap/input_tap.h"
#include "platform/linux/x11/wake_event.h"

namespace quil::linux_platform {

/// A tap's events, for a run loop to wait for.
class TapSource : public RunLoopSource {
  public:
    explicit TapSource(std::shared_ptr<InputTap> tap) : tap_(std::move(tap)) {}

    InputTap& tap() const { return *tap_; }
    void invalidate() { isValid_ = false; }
    bool isValid() const { return isValid_ && tap_->isValid(); }

  private:
    const std::shared_ptr<InputTap> tap_;
    std::atomic<bool> isValid_ = true;
};

/// A thread's run loop: waits for its taps and lets them process what has arrived. `run` and
/// `current` are for the loop's own thread, everything else for any.
class TapRunLoop : public RunLoop {
  public:
    void add(const std::shared_ptr<TapSource>& source);
    void remove(const std::shared_ptr<TapSource>& source);
    /// Runs until it is stopped or none of its sources is valid.
    void run();
    /// Makes `run` return if it runs now.
    void stop();
    /// Makes `run` look at its sources again.
    void wake() { wake_.set(); }
    /// The tap whose callback may be running now; null outside of `run`.
    const InputTap* current() const { return current_; }

  private:
    std::vector<std::shared_ptr<TapSource>> validSources();
    void wait(const std::vector<std::shared_ptr<TapSource>>& sources) const;

    WakeEvent wake_;
    const InputTap* current_ = nullptr;
    std::mutex lock_;
    std::vector<std::shared_ptr<TapSource>> sources_;
    bool isRunning_ = false;
    bool isStopped_ = false;
};

}  // namespace quil::linux_platform
