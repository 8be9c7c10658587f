#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// A window as its program has it, and as the user sees it.
struct FocusedWindow {
    Reference reference;
    /// The title on the screen, where the program has another one for it on the bus; nothing when
    /// it has the same, or the window cannot be told on the screen.
    std::optional<std::string> title;
};

/// The window of an application that holds the focus: the one that says so. Of several, or when
/// none does, the one that the X server's active window is, if that belongs to the process. The
/// names are those of the process on the bus.
std::optional<FocusedWindow> focusedWindow(AccessibilityBus& bus, X11Display& display,
                                           std::int32_t pid,
                                           const std::vector<std::string>& busNames);

}  // namespace quil::linux_platform
