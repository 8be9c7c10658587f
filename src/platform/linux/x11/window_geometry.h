#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/windows.h"

namespace quil::linux_platform {

/// Finds where a toolkit's window is on the screen, for toolkits that only know places within their
/// windows.
class WindowGeometry {
  public:
    /// `display` outlives this.
    explicit WindowGeometry(X11Display& display) : display_(display) {}

    /// The window that fits best: of that process, with that title, of that size (with or without
    /// the shadows that it draws around itself). A window of another process has to fit in title
    /// and size: a sandboxed application may be known by its helper's process. Of equals the
    /// foremost. Nothing when no window fits.
    std::optional<X11Window> find(std::int32_t pid, std::string_view title, Size size);

  private:
    X11Display& display_;
};

}  // namespace quil::linux_platform
