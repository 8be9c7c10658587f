#pragma once

#include <vector>

#include "platform/linux/accessibility/observed_element.h"
#include "platform/linux/atspi/accessibility_bus.h"

namespace quil::linux_platform {

/// Those of the elements that GTK itself makes, in programs that make elements of their own beside
/// them. One call for each element.
std::vector<const ObservedElement*> gtkElements(
    AccessibilityBus& bus, const std::vector<const ObservedElement*>& elements);

}  // namespace quil::linux_platform
