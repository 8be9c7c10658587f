#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The program that a window belongs to, and how far it is with the events that it gets.
///
/// One that replies to the window manager's pings ("_NET_WM_PING") replies when it has processed
/// all that came before. One that does not is judged by its process (`IdleWatch`).
class WindowClient {
  public:
    /// While this lives, the connection's events are ours. `XCB_WINDOW_NONE` stands for no
    /// program.
    WindowClient(X11Connection& connection, xcb_window_t window);
    ~WindowClient();
    WindowClient(const WindowClient&) = delete;
    WindowClient& operator=(const WindowClient&) = delete;

    /// Pings the program after what was sent to it so far. One that does not reply to pings is not
    /// sent any; it counts as having replied when its process is at rest.
    void sendPing();
    /// Waits until the program has replied to all pings but the last `open` ones, for `timeout` at
    /// the most: whether it has.
    bool waitForPings(std::uint32_t open, std::chrono::milliseconds timeout);
    /// Whether a program whose reply is overdue has shown no sign of life for 5 s (it has neither
    /// replied to a ping nor run nor wanted to), or has replied to none for 30 s.
    bool isHanging() const;

    /// Whether the program replies to pings; a wait for another one is for all of its events.
    bool repliesToPings() const { return repliesToPings_; }
    /// The process; absent when it is unknown or runs elsewhere.
    std::optional<std::int32_t> pid() const { return pid_; }

  private:
    using Clock = std::chrono::steady_clock;

    bool waitForReply(Clock::time_point deadline);
    bool takeReply();
    void noteReplied(std::uint32_t last);
    void checkActivity();

    X11Connection& connection_;
    /// The window that replies to pings, if there is one, else the one that was given.
    xcb_window_t window_ = XCB_WINDOW_NONE;
    bool repliesToPings_ = false;
    std::optional<std::int32_t> pid_;
    std::uint32_t lastPing_ = 0;
    std::uint32_t lastReplied_ = 0;

    Clock::time_point lastProgress_;
    Clock::time_point lastActivity_;
    std::uint64_t activity_ = 0;
};

}  // namespace quil::linux_platform
