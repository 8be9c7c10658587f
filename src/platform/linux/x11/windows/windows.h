#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// A top-level window of an application: the window that the application made, without the frame
/// that a window manager puts around it. Its number and its position are those that tools such as
/// xdotool and wmctrl give for it.
struct X11Window {
    xcb_window_t id = XCB_WINDOW_NONE;
    /// "_NET_WM_NAME", else "WM_NAME"; absent when the window has neither.
    std::optional<std::string> title;
    /// The window in global screen coordinates, without the shadows that the application draws
    /// around itself (`shadows`).
    Rect frame;
    /// Widths of the shadows inside the X window, left, right, top, bottom ("_GTK_FRAME_EXTENTS").
    struct Extents {
        double left = 0, right = 0, top = 0, bottom = 0;
    } shadows;
    /// The level that its type stands for; 0 for ordinary windows.
    std::int64_t layer = 0;
    /// The wallpaper or the like.
    bool isDesktopElement = false;
    /// Mapped, not minimised, on a workspace that is shown, and at least partly inside the screen.
    /// Other windows may cover it.
    bool onScreen = false;
    /// The window manager shows that the window wants to be looked at, such as one that was not
    /// given the focus.
    bool demandsAttention = false;
    /// The process that made the window; absent when it runs elsewhere or is unknown.
    std::optional<std::int32_t> pid;
    /// The window that it belongs to, as a dialog does ("WM_TRANSIENT_FOR"); none for other windows
    /// and for what belongs to all windows of an application.
    xcb_window_t transientFor = XCB_WINDOW_NONE;
    /// The two strings of "WM_CLASS", "_GTK_APPLICATION_ID", and "_KDE_NET_WM_DESKTOP_FILE" or
    /// "_BAMF_DESKTOP_FILE"; empty when missing.
    std::string instanceName;
    std::string className;
    std::string gtkApplicationId;
    std::string desktopFile;

    /// The X window itself, shadows included, in global screen coordinates.
    Rect windowRect() const {
        return {frame.x - shadows.left, frame.y - shadows.top,
                frame.width + shadows.left + shadows.right,
                frame.height + shadows.top + shadows.bottom};
    }
};

/// Describes these windows, in their order, at the cost of a few round trips in all. Windows that
/// have gone are left out.
std::vector<X11Window> describeWindows(X11Connection& connection,
                                       const std::vector<xcb_window_t>& windows);

}  // namespace quil::linux_platform
