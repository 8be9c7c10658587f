#pragma once

#include <cstdint>
#include <string_view>

#include "platform/linux/accessibility/window_origins.h"
#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"
#include "platform/linux/x11/connection.h"
#include "platform/value.h"

/// What can be done to an element. Each call returns 0 or an error code and waits for a bounded
/// time only.
namespace quil::linux_platform {

/// Performs one of the element's actions.
std::int32_t performElementAction(AccessibilityBus& bus, X11Display& display,
                                  WindowOrigins& origins, const Reference& element,
                                  std::string_view action);

/// Moves the keyboard focus to the element, for the value true; there is no taking it away.
std::int32_t setElementFocused(AccessibilityBus& bus, const Reference& element, const Value& value);

/// Replaces the element's text, or sets its number (also from a text that is a number).
std::int32_t setElementValue(AccessibilityBus& bus, const Reference& element, const Value& value);

}  // namespace quil::linux_platform
