#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The program that a window belongs to, and how far it is with the events that it gets.
///
/// One that answers the window manager's pings ("_NET_WM_PING") answers when it has dealt with all
/// that came before. One that does not is judged by its process (`ProcessRest`).
class WindowClient {
  public:
    /// While this lives, the connection's events are ours. Nobody receives events for
    /// `XCB_WINDOW_NONE`.
    WindowClient(X11Connection& connection, xcb_window_t window);
    ~WindowClient();
    WindowClient(const WindowClient&) = delete;
    WindowClient& operator=(const WindowClient&) = delete;

    /// Marks a point in what is sent to it.
    void sendPing();
    /// Waits until the program has passed all marks but the last `open` ones, for `timeout` at the
    /// most: whether it has.
    bool waitForPings(std::uint32_t open, std::chrono::milliseconds timeout);
    /// Whether a program that has kept us waiting has shown no sign of life for 5 s (it has neither
    /// passed a mark nor run nor wanted to), or has passed no mark for 30 s.
    bool isHanging() const;

    /// Whether the program tells how far it is; a wait for another one is for all of its events.
    bool answersPings() const { return answersPings_; }
    /// The process; absent when it is unknown or runs elsewhere.
    std::optional<std::int32_t> pid() const { return pid_; }

  private:
    using Clock = std::chrono::steady_clock;

    bool waitForAnswer(Clock::time_point deadline);
    bool takeAnswer();
    void passMarks(std::uint32_t last);
    void lookForLife();

    X11Connection& connection_;
    /// The window that answers pings, if there is one, else the one that was given.
    xcb_window_t window_ = XCB_WINDOW_NONE;
    bool answersPings_ = false;
    std::optional<std::int32_t> pid_;
    std::uint32_t marks_ = 0;
    std::uint32_t passed_ = 0;

    Clock::time_point lastPassed_;
    Clock::time_point lastLife_;
    std::uint64_t activity_ = 0;
};

}  // namespace quil::linux_platform
