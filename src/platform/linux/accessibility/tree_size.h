#pragma once

#include <cstdint>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"

namespace quil::linux_platform {

/// The elements of a tree that can be told about in a single answer, which does not take long.
inline constexpr std::int64_t kSmallTree = 5000;

/// Whether the tree below an element is a small one, and none of its lists long: for the answer,
/// each entry's place in its list is looked up. The elements are counted by their lists of children
/// alone, for a second at most: a program that cannot list them in this time is slow in telling
/// about all of them, too. False also when some list cannot be had.
bool isSmallTree(AccessibilityBus& bus, const Reference& root);

}  // namespace quil::linux_platform
