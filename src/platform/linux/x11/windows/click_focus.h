#pragma once

#include "platform/geometry.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Brings the top-level window at that point of the screen to the front where nobody else does so
/// when it is clicked: a Wayland compositor does not see the clicks that Xwayland makes up, so the
/// focus would stay where it is. Does nothing on other servers, for menus and for the active
/// window.
void focusClickedWindow(X11Connection& connection, Point point);

}  // namespace quil::linux_platform
