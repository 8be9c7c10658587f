#pragma once

#include <deque>
#include <string>
#include <vector>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"
#include "platform/linux/x11/windows/windows.h"

namespace quil::linux_platform {

/// A window of a program on the accessibility bus.
struct ApplicationWindow {
    Reference reference;
    /// Name, states and extents.
    Facts facts;

    /// Whether it has the title, or at some scale the size (with or without shadows), of a window
    /// on the screen.
    bool hasTitleOf(const X11Window& window) const;
    bool hasSizeOf(const X11Window& window) const;
};

/// The windows of a process that is on the bus under these names. Bounded.
std::deque<ApplicationWindow> applicationWindows(AccessibilityBus& bus,
                                                 const std::vector<std::string>& busNames);

}  // namespace quil::linux_platform
