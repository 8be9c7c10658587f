#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/input/key_relay.h"
#include "platform/linux/x11/input/window_client.h"

namespace quil::linux_platform {

/// The window that keys go to: the one that has the focus, else the active one; none when there is
/// none.
xcb_window_t keyboardWindow(X11Connection& connection);

/// The program that has the keyboard now, and how far it is with the keys that it gets. Programs
/// look at what a key means when they process it, not when it was pressed.
class FocusedClient {
  public:
    /// While this lives, the connection's events are ours.
    explicit FocusedClient(X11Connection& connection)
        : FocusedClient(connection, keyboardWindow(connection)) {}
    /// The one that had it when it was `window`'s.
    FocusedClient(X11Connection& connection, xcb_window_t window);

    /// Whether the next key is to be sent only when the program has replied to the ping after
    /// the one before.
    bool takesKeysSingly() const { return relay_ && relay_->mixesKeysUp(); }
    /// Whether other processes have the keys meanwhile, any number of them (`KeyRelay`).
    bool relaysKeys() const { return relay_.has_value(); }
    /// For a program that replies to a ping, and processes a click, before the keys that came
    /// first: waits until it has processed these, 1 s at the most.
    void waitForDelayedKeys();
    /// Whether strings of several UTF-16 units overtake keys that the program has not processed:
    /// VCL, LibreOffice's toolkit, keeps keys back for a moment while more of them are coming.
    bool reordersStrings() const { return keepsKeysBack_; }
    /// Whether the program takes a keysym for one UTF-16 unit: AWT, Java's toolkit, cuts off the
    /// rest.
    bool takesUnits() const { return takesUnits_; }
    /// As of `WindowClient`; to have replied to all pings also means that no keys are
    /// on their way or kept back.
    void sendPing() { program_.sendPing(); }
    bool waitForPings(std::uint32_t open, std::chrono::milliseconds timeout);
    bool repliesToPings() const { return program_.repliesToPings(); }
    bool isHanging() const { return program_.isHanging(); }

  private:
    WindowClient program_;
    std::optional<KeyRelay> relay_;
    /// The program and those that its keys go through.
    std::vector<std::int32_t> ximProcesses_;
    bool keepsKeysBack_ = false;
    bool takesUnits_ = false;
};

}  // namespace quil::linux_platform
