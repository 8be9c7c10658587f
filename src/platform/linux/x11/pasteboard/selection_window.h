#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

using XcbEvent = XcbPointer<xcb_generic_event_t>;

/// An invisible window for talking about selections, and the events that reach it. Everything is
/// called on one thread, the only one that takes events from the connection.
class SelectionWindow {
  public:
    using Clock = std::chrono::steady_clock;
    using EventHandler = std::function<void(const xcb_generic_event_t& event)>;

    /// `handler` gets every event that `waitFor` does not take.
    SelectionWindow(std::shared_ptr<X11Connection> connection, EventHandler handler);
    ~SelectionWindow();
    SelectionWindow(const SelectionWindow&) = delete;
    SelectionWindow& operator=(const SelectionWindow&) = delete;

    X11Connection& connection() const { return *connection_; }
    xcb_window_t id() const { return window_; }

    /// Hands what has arrived to the handler.
    void handleEvents();
    /// Waits for an event that `isWanted` and takes it; the others go to the handler meanwhile.
    /// Null when it did not come in time or the server has gone.
    XcbEvent waitFor(const std::function<bool(const xcb_generic_event_t&)>& isWanted,
                     Clock::time_point deadline);
    /// Waits until there may be events, `otherDescriptor` can be read, or the time has passed.
    void sleepUntil(Clock::time_point time, int otherDescriptor);
    /// The server's time now, in its milliseconds; 0 when it does not say.
    xcb_timestamp_t serverTime();

  private:
    XcbEvent nextEvent();

    std::shared_ptr<X11Connection> connection_;
    EventHandler handler_;
    xcb_window_t window_;
    /// Found by a sleep, for the next look at events.
    XcbEvent deferred_;
};

}  // namespace quil::linux_platform
