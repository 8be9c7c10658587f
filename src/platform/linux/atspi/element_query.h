#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"

namespace quil::linux_platform {

/// The children among which a text field is looked for.
inline constexpr std::size_t kEditableChildCandidates = 8;

/// The element to ask, and for how much.
struct QueryTarget {
    AtspiProgram& program;
    /// The element's path there.
    const std::string& path;
    /// At most so many children are wanted.
    std::int64_t maximumChildren;
};

/// Asks an element for facts, without waiting. The replies go to `facts`; `done` is called once,
/// when all of them are there. Some facts lean on others that have to be known before: children on
/// childCount, extents on states, and so on; what an attribute `needs` comes in that order. Both
/// `facts` and the path live until then.
void queryFacts(const QueryTarget& target, FactSet wanted, Facts& facts,
                std::function<void()> done);

}  // namespace quil::linux_platform
