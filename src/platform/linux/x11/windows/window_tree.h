#pragma once

#include <span>
#include <vector>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The children of the windows, bottom to top in each; none of a window that has gone. One round
/// trip.
std::vector<xcb_window_t> childrenOf(X11Connection& connection,
                                     std::span<const xcb_window_t> windows);
std::vector<xcb_window_t> childrenOfRoot(X11Connection& connection);

}  // namespace quil::linux_platform
