#pragma once

#include <cstdint>
#include <optional>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The program whose window is active.
struct ActiveProgram {
    std::optional<std::int32_t> pid;
    /// The base of its X ids; 0 when there is none.
    std::uint32_t client = 0;
    /// The window that bears the time of the latest key or button press that it has dealt with.
    xcb_window_t userTimeWindow = XCB_WINDOW_NONE;
};

/// Without a program when there is no active window.
ActiveProgram findActiveProgram(X11Connection& connection);

/// The server's time of the latest press that the program has dealt with (_NET_WM_USER_TIME);
/// nothing when it keeps that to itself.
std::optional<std::uint32_t> latestPressOf(X11Connection& connection, const ActiveProgram& program);

}  // namespace quil::linux_platform
