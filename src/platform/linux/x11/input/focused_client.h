#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/input/gtk4_ibus.h"
#include "platform/linux/x11/input/window_client.h"

namespace quil::linux_platform {

/// The program that has the keyboard now, and how far it is with the keys that it gets. Programs
/// look at what a key means when they process it, not when it was pressed.
class FocusedClient {
  public:
    /// While this lives, the connection's events are ours.
    explicit FocusedClient(X11Connection& connection);

    /// Whether the next key is to be sent only when the program has replied to the ping after
    /// the one before.
    bool takesKeysSingly() const { return inputMethod_.has_value(); }
    /// Whether strings of several UTF-16 units overtake keys that the program has not processed:
    /// VCL, LibreOffice's toolkit, keeps keys back for a moment while more of them are coming.
    bool reordersStrings() const { return keepsKeysBack_; }
    /// Whether the program takes a keysym for one UTF-16 unit: AWT, Java's toolkit, cuts off the
    /// rest.
    bool takesUnits() const { return takesUnits_; }
    /// As of `WindowClient`; to have replied to all pings also means that the input method is done
    /// and that no keys are kept back.
    void sendPing() { program_.sendPing(); }
    bool waitForPings(std::uint32_t open, std::chrono::milliseconds timeout);
    bool repliesToPings() const { return program_.repliesToPings(); }
    bool isHanging() const { return program_.isHanging(); }

  private:
    WindowClient program_;
    std::optional<Gtk4Ibus> inputMethod_;
    /// The program and those that its keys go through.
    std::vector<std::int32_t> ximProcesses_;
    bool keepsKeysBack_ = false;
    bool takesUnits_ = false;
};

/// The window that keys go to: the one that has the focus, else the active one; none when there is
/// none.
xcb_window_t keyboardWindow(X11Connection& connection);

}  // namespace quil::linux_platform
