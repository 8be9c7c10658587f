#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/input/posted_event.h"

namespace quil::linux_platform {

/// The most wheel clicks in one direction that one event makes.
inline constexpr std::int32_t kMaximumWheelClicks = 1000;

/// Sends mouse and wheel events. The pointer moves to the pixel that an event's location is in; a
/// line of the wheel is a click of the button that scrolls that way. What the user has made of
/// the buttons (left-handed, natural scrolling) is taken into account: a left click stays one.
class PointerOutput {
  public:
    /// Sends one event of a mouse button, the pointer or the wheel, without waiting for the server.
    /// `runtime` is a window of ours, by which others know whether this process is there; only a
    /// press needs it.
    void send(X11Connection& connection, const PostedEvent& event,
              xcb_window_t runtime = XCB_WINDOW_NONE);

    /// Waits until toolkits count a press at that point as the first of its clicks: until so much
    /// time has passed since the last one of that button nearby. The first of several is not to
    /// come soon after one elsewhere either: GTK's text views then miscount them.
    void awaitNewCount(Point at, std::uint32_t button, int count) const;

  private:
    /// The device's button that applications see as `button`.
    std::uint8_t deviceButton(X11Connection& connection, std::uint8_t button);
    void turnWheel(X11Connection& connection, std::int32_t amount, std::uint8_t positive,
                   std::uint8_t negative);

    /// Asked for once for a double click: the server may be busy, and the clicks have to come soon
    /// one after the other.
    std::vector<std::uint8_t> buttons_;
    /// Those of the device, which come before the pointer's.
    std::vector<std::uint8_t> ownButtons_;
    std::chrono::steady_clock::time_point buttonsExpire_;
    struct Press {
        std::chrono::steady_clock::time_point time;
        Point location;
        std::uint32_t button = 0;
    };
    std::optional<Press> lastPress_;
};

}  // namespace quil::linux_platform
