#pragma once

#include <cstdint>
#include <functional>

#include "platform/linux/atspi/facts.h"

namespace quil::linux_platform {

/// Gives role, states, interfaces and children of an element; null when they cannot be read.
using FactsOf = std::function<const Facts*(const Reference&)>;

/// Scroll bars come early, beside what they scroll: the search looks at so many children of an
/// element.
inline constexpr std::int64_t kScrollBarCandidates = 8;

/// The facts that the search needs of every element, and their order.
FactSet needsForScrollBarSearch(const Facts& facts);

/// What scrolls the element up and down: a scroll bar among its children, or one in a container of
/// its own there. It has a Value interface. Empty when there is none.
Reference findScrollBar(const Facts& element, const FactsOf& factsOf);

}  // namespace quil::linux_platform
