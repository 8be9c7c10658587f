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

/// A picture, and what it shows.
struct Capture {
    /// As above; empty for every failure of the platform.
    std::string dataUrl;
    /// In global screen coordinates.
    Rect bounds;
};

/// A picture of what a display shows, menus and all but the pointer, at `scale` pixels per point.
/// Absent when there is no such display; without an id, the main one is taken.
std::optional<Capture> captureDisplay(Displays& displays, ScreenCapture& capture,
                                      std::optional<std::int64_t> display, double scale);

/// A picture of the window with that number alone, at `scale` pixels per point. Absent when no
/// window on screen has it.
std::optional<Capture> captureWindow(ScreenCapture& capture, std::int64_t window, double scale);

}  // namespace quil
