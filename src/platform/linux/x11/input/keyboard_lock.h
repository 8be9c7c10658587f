#pragma once

#include <chrono>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The right to use the keyboard, which one runtime has at a time while this lives; another one
/// waits for it. It ends with the process, too, and is lost by one that shows no sign of life.
class KeyboardLock {
  public:
    /// Waits until the keyboard is free or its owner has given no sign of life for some seconds.
    explicit KeyboardLock(X11Connection& connection);
    ~KeyboardLock();
    KeyboardLock(const KeyboardLock&) = delete;
    KeyboardLock& operator=(const KeyboardLock&) = delete;

    /// Whether some runtime has the keyboard.
    static bool isHeld(X11Connection& connection);

    /// A sign of life, to be given about every second. False when the lock has been lost.
    bool renew();

  private:
    using Clock = std::chrono::steady_clock;

    xcb_window_t owner() const;
    bool acquireIf(xcb_window_t expected);
    void acquire();

    X11Connection& connection_;
    const xcb_atom_t selection_;
    /// Owns the selection that stands for the lock. A new one is the sign of life.
    xcb_window_t window_ = XCB_WINDOW_NONE;
    Clock::time_point nextRenewal_;
};

}  // namespace quil::linux_platform
