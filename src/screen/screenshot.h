#pragma once

#include <optional>
#include <string>

#include "platform/platform.h"

namespace quil {

/// A picture of one window, as a "data:image/png;base64," URL: the frontmost application's first
/// window at the ordinary level, else the first such window of anyone. Two image pixels per point,
/// the window's own content only, never the pointer. Absent for every failure: no permission, no
/// window, a window that went away.
std::optional<std::string> screenshotDataURL(Platform& platform);

}  // namespace quil
