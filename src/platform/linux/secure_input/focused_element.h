#pragma once

#include <optional>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"

namespace quil::linux_platform {

/// The element below this one that says that it has the focus, the deepest one. Looks at what is
/// visible, for half a second at most.
std::optional<Reference> focusedElement(AccessibilityBus& bus, const Reference& root);

}  // namespace quil::linux_platform
