#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/geometry.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/windows/windows.h"

namespace quil::linux_platform {

/// The top-level window that fits best what a toolkit says of one of its own: of that process, with
/// that title, of that size (with or without the shadows that it draws around itself). A window of
/// another process has to fit in title and size: a sandboxed application may be known by its
/// helper's process. Of equals the foremost. Nothing when no window fits.
std::optional<X11Window> findWindow(X11Connection& connection, std::int32_t pid,
                                    std::string_view title, Size size);

}  // namespace quil::linux_platform
