#pragma once

#include <chrono>
#include <memory>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Finds out when the window manager has processed the events that it had before.
///
/// A window that is never shown asks for another position. The request goes to the window manager,
/// as all such requests do, and one of a window that it does not manage is granted as it stands
/// (ICCCM 4.1.5, 4.1.3.1): so the window has moved when what came before has been processed. When
/// there is no window manager the server moves it.
class WindowManagerQueue {
  public:
    /// Waits for it, `timeout` at the most: whether it has. While this waits, the connection's
    /// events are ours.
    bool waitUntilDone(const std::shared_ptr<X11Connection>& connection,
                       std::chrono::milliseconds timeout);

  private:
    void makeWindow(X11Connection& connection);

    std::weak_ptr<X11Connection> connection_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    std::int16_t x_ = 0;
};

}  // namespace quil::linux_platform
