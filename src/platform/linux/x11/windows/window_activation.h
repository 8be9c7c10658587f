#pragma once

#include <xcb/xproto.h>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Asks for that top-level window to come to the front with the focus, without waiting for it. A
/// window manager that follows the Extended Window Manager Hints is asked as a pager asks it, to
/// show the window's workspace, too; else the window is mapped, raised and focused directly.
void bringToFront(X11Connection& connection, xcb_window_t window);

}  // namespace quil::linux_platform
