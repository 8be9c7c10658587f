#pragma once

#include <chrono>
#include <optional>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The program that keys go to.
class KeyReceiver {
  public:
    /// The one that has the keyboard now.
    explicit KeyReceiver(X11Connection& connection);

    /// Waits until the program has dealt with the keys that were sent to it, `limit` at the most:
    /// whether it has. Takes all events that come meanwhile from the connection.
    ///
    /// Programs look at what a key means when they deal with it, not when it was pressed. One that
    /// answers the window manager's pings ("_NET_WM_PING") answers when it has dealt with all
    /// that came before. One that does not is taken to be done when its process has come to rest.
    bool waitUntilDone(std::chrono::milliseconds limit);

  private:
    bool waitForPing(std::chrono::steady_clock::time_point deadline);
    bool waitForRest(std::chrono::steady_clock::time_point deadline) const;

    X11Connection& connection_;
    /// The window that answers pings, if there is one, else the one that has the focus.
    xcb_window_t window_ = XCB_WINDOW_NONE;
    bool answersPings_ = false;
    std::optional<std::int32_t> pid_;
};

}  // namespace quil::linux_platform
