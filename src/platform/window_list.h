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
    /// `relativeToWindow` is 0 for none. Nothing when the list cannot be had.
    virtual std::optional<Value> copyWindowInfo(std::uint32_t options,
                                                std::uint32_t relativeToWindow) = 0;
};

}  // namespace quil
