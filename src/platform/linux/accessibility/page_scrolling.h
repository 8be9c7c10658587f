#pragma once

#include <cstdint>

#include "platform/linux/accessibility/window_origins.h"
#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Scrolls what an element shows up or down by about its height: by its scroll bar, which some
/// toolkits let only the mouse wheel move; without one, as in pages of Firefox, by asking for
/// the content to be elsewhere. Returns 0 when it has moved or is at its end, else an error code.
/// Bounded.
std::int32_t scrollByPage(AccessibilityBus& bus, X11Display& display, WindowOrigins& origins,
                          const Reference& element, bool isDown);

}  // namespace quil::linux_platform
