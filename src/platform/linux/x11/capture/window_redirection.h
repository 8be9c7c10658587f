#pragma once

#include <chrono>
#include <memory>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Has the X server keep the pixels of every window, those that are covered or outside the screen
/// included. Without it (and without a compositing manager, which does the same) they do not exist.
/// Lasts as long as the connection: a window that is covered later is then kept as it is.
class WindowRedirection {
  public:
    explicit WindowRedirection(std::shared_ptr<X11Connection> connection)
        : connection_(std::move(connection)) {}

    /// Makes sure that the pixels of the window exist. The first time, what was covered until then
    /// has to be painted again by its program: waits for that, for half a second at most. False
    /// when the server cannot keep pixels.
    bool keepContent(xcb_window_t window);

  private:
    bool redirect(xcb_window_t window);

    std::shared_ptr<X11Connection> connection_;
    bool isRedirected_ = false;
    xcb_window_t paintedFirst_ = XCB_WINDOW_NONE;
    /// When all programs have painted what was covered at first, or never will.
    std::chrono::steady_clock::time_point paintedBy_;
};

}  // namespace quil::linux_platform
