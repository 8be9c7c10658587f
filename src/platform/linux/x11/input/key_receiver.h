#pragma once

#include <chrono>
#include <optional>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/input/event_receiver.h"
#include "platform/linux/x11/input/gtk4_ibus.h"

namespace quil::linux_platform {

/// The program that has the keyboard now, and how far it is with the keys that it gets. Programs
/// look at what a key means when they deal with it, not when it was pressed.
class KeyReceiver {
  public:
    /// While this lives, the connection's events are ours.
    explicit KeyReceiver(X11Connection& connection);

    /// Whether the next key is to be sent only when the program has passed the mark of the one
    /// before.
    bool takesKeysSingly() const { return inputMethod_.has_value(); }
    /// As of `EventReceiver`; to have passed all marks also means that the input method is done.
    void mark() { program_.mark(); }
    bool waitForMarks(std::uint32_t open, std::chrono::milliseconds timeout);
    bool answersPings() const { return program_.answersPings(); }
    bool isHanging() const { return program_.isHanging(); }

  private:
    EventReceiver program_;
    std::optional<Gtk4Ibus> inputMethod_;
};

/// The window that keys go to: the one that has the focus, else the active one; none when there is
/// none.
xcb_window_t keyboardWindow(X11Connection& connection);

}  // namespace quil::linux_platform
