#pragma once

#include <cstdint>
#include <functional>
#include <limits>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"

namespace quil::linux_platform {

/// What has to be asked for next, given what is known; empty when that is enough.
using Needs = std::function<FactSet(const Facts&)>;

/// These, each once.
Needs needsOf(FactSet wanted);

/// How much is read, and for how long.
struct ReadingLimits {
    /// A longer list of children may end there.
    std::int64_t maximumChildren = std::numeric_limits<std::int32_t>::max();
    BusDeadline deadline = BusDeadline::max();
};

/// Asks one element until nothing more is needed, or until nothing can be known of it. Returns 0,
/// or the code of an element that cannot be read. Unresponsive applications are abandoned.
std::int32_t readFacts(AccessibilityBus& bus, const Reference& element, const Needs& needs,
                       Facts& facts, const ReadingLimits& limits = {});

/// Finds what scrolls the element, and notes it in its facts. Bounded.
void readScrollBar(AccessibilityBus& bus, const Reference& element, Facts& facts);

}  // namespace quil::linux_platform
