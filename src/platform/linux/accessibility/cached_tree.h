#pragma once

#include <unordered_map>
#include <vector>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"

namespace quil::linux_platform {

/// What a program says of all its elements in a single reply. Costs it a tenth of what the same
/// costs in single questions, but there is no asking for less: it is for programs that are known to
/// be small.
class CachedTree {
  public:
    /// Asks the program. Bounded; empty when it does not give such replies.
    CachedTree(AccessibilityBus& bus, AtspiProgram& program);

    /// Elements in the reply.
    std::int64_t size() const { return static_cast<std::int64_t>(facts_.size()); }
    /// Role, name, description, states and interfaces of the element and, when the reply has all
    /// of them, its children. Null when it was not in the reply.
    const Facts* find(const Reference& element) const;

  private:
    struct Child {
        Reference reference;
        std::int32_t index;
    };

    bool read(sd_bus_message* message);
    void linkChildren();

    std::unordered_map<Reference, Facts, ReferenceHash> facts_;
    std::unordered_map<Reference, std::vector<Child>, ReferenceHash> children_;
};

}  // namespace quil::linux_platform
