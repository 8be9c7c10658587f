#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/value.h"

namespace quil {

/// Options of `copyWindowInfo`, with the numbers of the Quartz window services.
inline constexpr std::uint32_t kWindowListOptionOnScreenOnly = 1;
inline constexpr std::uint32_t kWindowListExcludeDesktopElements = 16;

/// Members of a window's information dictionary. A platform leaves out what it does not know.
inline constexpr std::string_view kWindowLayer = "kCGWindowLayer";          // integer; 0: ordinary
inline constexpr std::string_view kWindowNumber = "kCGWindowNumber";        // integer
inline constexpr std::string_view kWindowName = "kCGWindowName";            // string, the title
inline constexpr std::string_view kWindowOwnerName = "kCGWindowOwnerName";  // string
inline constexpr std::string_view kWindowOwnerPid = "kCGWindowOwnerPID";    // integer
/// A dictionary with the numbers "X", "Y", "Width" and "Height": the window's rectangle in global
/// screen coordinates.
inline constexpr std::string_view kWindowBounds = "kCGWindowBounds";

/// The windows of all applications.
class WindowList {
  public:
    virtual ~WindowList() = default;

    /// The windows that `options` select, front to back, as a list of information dictionaries.
    /// `relativeToWindow` is 0 for none. Nothing when the list cannot be read.
    virtual std::optional<Value> copyWindowInfo(std::uint32_t options,
                                                std::uint32_t relativeToWindow) = 0;

    /// Asks for the window with that number (`kWindowNumber`) to come to the front with the focus,
    /// from another workspace or minimised as it may be, without waiting for it. False when there
    /// is no such window, or no window system to ask.
    virtual bool activateWindow(std::int64_t number) = 0;
    /// The number of the window that has the focus, in front of its application's others; nothing
    /// when no window has it.
    virtual std::optional<std::int64_t> activeWindow() = 0;
};

}  // namespace quil
