#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/accessibility/coordinate_map.h"
#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/windows/pop_ups.h"

namespace quil::linux_platform {

/// A window of a program, found on the screen: what its elements' coordinates mean.
struct LocatedWindow {
    /// Its process.
    std::int32_t pid = 0;
    CoordinateMap map;
    /// As of `ToolkitWindow`.
    bool hasWholeScales = false;
    bool isWithinWindow = false;
    bool isSwing = false;
    /// Pop-ups whose elements have other coordinates; empty when there is no difference.
    std::vector<PopUp> popUps;
};

/// Finds the X window of an element that is a window. The facts are what is known of it already.
/// Nothing when there is none that it can be, or when the program does not say.
std::optional<LocatedWindow> locateWindow(AccessibilityBus& bus, X11Display& display,
                                          const Reference& window, Facts facts);

}  // namespace quil::linux_platform
