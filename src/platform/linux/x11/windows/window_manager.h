#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/geometry.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The workspace of a window that is on all of them ("_NET_WM_DESKTOP").
inline constexpr std::uint32_t kAllWorkspaces = 0xFFFFFFFF;

/// What a window manager that follows the Extended Window Manager Hints says on the root window.
struct WindowManager {
    /// The windows that it manages, bottom to top ("_NET_CLIENT_LIST_STACKING"); absent when it
    /// does not say.
    std::optional<std::vector<xcb_window_t>> stacking;
    /// "_NET_ACTIVE_WINDOW"; none when no window is active, or it does not say.
    xcb_window_t active = XCB_WINDOW_NONE;
};

/// The window manager that runs now. Absent when there is none, or an old one: a window manager
/// that has gone leaves its properties behind, but not the window that vouches for them.
std::optional<WindowManager> readWindowManager(X11Connection& connection);

/// Which workspaces are shown, and the whole screen.
struct Workspaces {
    /// "_NET_CURRENT_DESKTOP"; absent when there are no workspaces.
    std::optional<std::uint32_t> current;
    /// Each monitor shows a workspace of its own, of which only one can be the current one. The
    /// window managers that do this unmap the windows of workspaces that are not shown.
    bool severalAreShown = false;
    /// The root window, in global screen coordinates.
    Rect screen;
};
Workspaces readWorkspaces(X11Connection& connection);

}  // namespace quil::linux_platform
