#pragma once

#include <chrono>

namespace quil::linux_platform {

/// An event that wakes a thread out of poll(2). It stays set until it is cleared. May be used from
/// any thread.
class WakeEvent {
  public:
    WakeEvent();
    ~WakeEvent();
    WakeEvent(const WakeEvent&) = delete;
    WakeEvent& operator=(const WakeEvent&) = delete;

    /// False when the system had no descriptor left: `set` then does nothing.
    bool isValid() const { return descriptor_ >= 0; }
    /// Readable while the event is set; -1 when there is none, which poll(2) passes over.
    int descriptor() const { return descriptor_; }

    void set() const;
    void clear() const;
    /// Waits until it is set, for `timeout` at the most: whether it is.
    bool wait(std::chrono::milliseconds timeout) const;

  private:
    const int descriptor_;
};

}  // namespace quil::linux_platform
