#pragma once

#include <xcb/xproto.h>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Asks for that top-level window to come to the front with the focus. A window manager that
/// follows the Extended Window Manager Hints is asked as a pager asks it, up to three times within
/// 0.6 s until the window has come, from the second time on to show the window's workspace, too;
/// else the window is mapped, raised and focused directly.
void bringToFront(X11Connection& connection, xcb_window_t window);

}  // namespace quil::linux_platform
