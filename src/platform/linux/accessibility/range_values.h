#pragma once

#include <cstdint>
#include <optional>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"

/// Numbers of elements that have them: sliders, spin buttons, scroll bars. Some toolkits reply
/// that they have set a number and do nothing, so that it is looked at afterwards.
namespace quil::linux_platform {

/// A number of the element's Value interface ("CurrentValue", "MinimumValue" and so on).
std::optional<double> rangeProperty(AccessibilityBus& bus, const Reference& element,
                                    const char* name);

/// Whether the element's number becomes another one than it was, within a bounded time.
bool numberChanges(AccessibilityBus& bus, const Reference& element, double before);

/// Sets the number, or the one next to it that the element can have. Returns 0 when it was that
/// before, or has changed; else an error code. Bounded.
std::int32_t setRangeValue(AccessibilityBus& bus, const Reference& element, double number);

}  // namespace quil::linux_platform
