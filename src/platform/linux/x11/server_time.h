#pragma once

#include <cstdint>
#include <optional>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The server's time now, in milliseconds, as events carry it. Throws away the events that have
/// arrived. Nothing when the server has gone.
std::optional<xcb_timestamp_t> readServerTime(X11Connection& connection);

}  // namespace quil::linux_platform
