#pragma once

#include "platform/linux/input/posted_event.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The most wheel clicks in one direction that one event makes.
inline constexpr std::int32_t kMostWheelClicks = 1000;

/// Sends a mouse or wheel event. The pointer moves to the pixel that the event's location is in; a
/// line of the wheel is a click of the button that scrolls that way. What the person has made of
/// the buttons (left-handed, natural scrolling) is taken into account: a left click stays one.
void sendPointerEvent(X11Connection& connection, const PostedEvent& event);

}  // namespace quil::linux_platform
