#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The layer of the desktop itself, with its icons (kCGDesktopWindowLevel, CGWindowLevel.h).
inline constexpr std::int64_t kDesktopLayer = -2147483623;

/// The layer of menus and lists of choices (kCGPopUpMenuWindowLevel).
inline constexpr std::int64_t kMenuLayer = 101;

/// The layer of a window of these types (the atoms of its "_NET_WM_WINDOW_TYPE", the best first):
/// 0 for ordinary windows, dialogs and palettes and for unknown types.
std::int64_t windowLayer(X11Connection& connection, const std::vector<std::uint32_t>& types);

}  // namespace quil::linux_platform
