#pragma once

#include "platform/linux/x11/connection.h"
#include "platform/png/picture.h"

namespace quil::linux_platform {

/// Makes those pixels transparent that are not part of a window with a shape of its own (round
/// corners, say): what they hold comes from elsewhere on the screen. The picture's top-left pixel
/// is that at `x`, `y` in the window, its border left out.
void clipToShape(X11Connection& connection, xcb_window_t window, int x, int y, Picture& picture);

}  // namespace quil::linux_platform
