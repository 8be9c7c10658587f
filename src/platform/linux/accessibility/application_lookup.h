#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/accessibility/accessibility_bus.h"

namespace quil::linux_platform {

/// The names under which a process is on the accessibility bus, in the registry's order. Empty when
/// it is not there.
std::vector<std::string> busNamesOf(AccessibilityBus& bus, std::int32_t pid);

}  // namespace quil::linux_platform
