#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/geometry.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// A menu, a list of choices, a tooltip or the like: a window that bypasses the window manager.
struct PopUp {
    xcb_window_t id = XCB_WINDOW_NONE;
    /// In global screen coordinates.
    Rect rect;
};

/// The menu or list of choices that lies above all other windows; nothing when something else does.
std::optional<xcb_window_t> topmostMenu(X11Connection& connection);

/// Those of a process that are shown, bottom to top, at the cost of a few round trips in all.
std::vector<PopUp> popUpsOf(X11Connection& connection, std::int32_t pid);

}  // namespace quil::linux_platform
