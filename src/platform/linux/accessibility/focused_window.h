#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The window of an application that holds the focus: the one that says so. Of several, or when
/// none does, the one that the X server's active window is, if that belongs to the process. The
/// names are those of the process on the bus.
std::optional<Reference> focusedWindow(AccessibilityBus& bus, X11Display& display, std::int32_t pid,
                                       const std::vector<std::string>& busNames);

}  // namespace quil::linux_platform
