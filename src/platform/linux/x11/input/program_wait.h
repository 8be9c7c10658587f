#pragma once

#include <algorithm>
#include <chrono>
#include <initializer_list>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// How long there is until then, at least 0.
inline std::chrono::milliseconds leftUntil(std::chrono::steady_clock::time_point deadline) {
    using std::chrono::milliseconds;
    const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
    return std::max(milliseconds::zero(), left);
}

/// Waits until the windows' programs have processed their events; also with those that they hand
/// on to processes of their own, as browsers do. Takes the events of the connection.
void waitForPrograms(X11Connection& connection, std::initializer_list<xcb_window_t> windows,
                     std::chrono::steady_clock::time_point deadline);

}  // namespace quil::linux_platform
