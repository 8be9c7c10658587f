#pragma once

#include <optional>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"

namespace quil::linux_platform {

/// The element below this one that says that it has the focus: of several (the chosen tab says so
/// in Qt, wherever the focus is) a password field, else the deepest one. Looks at what is visible,
/// for half a second at most.
std::optional<Reference> focusedElement(AccessibilityBus& bus, const Reference& root);

}  // namespace quil::linux_platform
