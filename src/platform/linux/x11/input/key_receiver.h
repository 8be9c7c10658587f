#pragma once

#include <chrono>
#include <optional>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/input/gtk4_ibus.h"

namespace quil::linux_platform {

/// The program that keys go to, and how far it is with them.
///
/// Programs look at what a key means when they deal with it, not when it was pressed. One that
/// answers the window manager's pings ("_NET_WM_PING") answers when it has dealt with all that came
/// before. One that does not is taken to be done when its process has come to rest.
class KeyReceiver {
  public:
    /// The one that has the keyboard now. While this lives, the connection's events are ours.
    explicit KeyReceiver(X11Connection& connection);
    ~KeyReceiver();
    KeyReceiver(const KeyReceiver&) = delete;
    KeyReceiver& operator=(const KeyReceiver&) = delete;

    /// Whether the next key is to be sent only when the program has passed the mark of the one
    /// before.
    bool takesKeysSingly() const { return inputMethod_.has_value(); }
    /// Marks a point in what is sent to it.
    void mark();
    /// Waits until the program has passed all marks but the last `open` ones, for each mark
    /// `patience` at the most: whether it has.
    bool waitForMarks(std::uint32_t open, std::chrono::milliseconds patience);

  private:
    bool waitForMark(std::chrono::steady_clock::time_point deadline);
    bool waitForRest(std::chrono::steady_clock::time_point deadline) const;

    X11Connection& connection_;
    /// The window that answers pings, if there is one, else the one that has the focus.
    xcb_window_t window_ = XCB_WINDOW_NONE;
    bool answersPings_ = false;
    std::optional<std::int32_t> pid_;
    std::optional<Gtk4Ibus> inputMethod_;
    std::uint32_t marks_ = 0;
    std::uint32_t passed_ = 0;
};

}  // namespace quil::linux_platform
