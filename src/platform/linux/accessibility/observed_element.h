#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/atspi/facts.h"

namespace quil::linux_platform {

/// One element of an observed tree.
struct ObservedElement {
    Reference reference;
    Facts facts;
    /// Facts that were asked for and have had no reply.
    FactSet pending;
    /// As many as were wanted; belong to the tree. An element may be listed more than once.
    std::vector<ObservedElement*> children;
    /// The first one, in the order of the walk, that lists the element. Null for the root.
    ObservedElement* parent = nullptr;

    bool isBegun = false;
    bool isComplete = false;
};

/// Where one is in a walk through a tree: parents before their children, these in their order. What
/// the elements before it list must not change any more; what it lists itself may, until the walk
/// goes on.
class WalkPosition {
  public:
    /// At the end of a walk.
    WalkPosition() = default;
    /// At the root. Elements deeper than `maximumDepth` levels are left out; the root is the
    /// first level, and never left out.
    WalkPosition(ObservedElement& root, int maximumDepth);

    /// Null at the end.
    ObservedElement* element() const { return element_; }
    /// How many elements come before, each as often as it is listed.
    std::int64_t index() const { return index_; }
    void advance();

  private:
    struct Siblings {
        ObservedElement* const* next;
        ObservedElement* const* end;
    };

    ObservedElement* element_ = nullptr;
    std::int64_t index_ = 0;
    int maximumDepth_ = 0;
    /// For the element and each above it, those after it.
    std::vector<Siblings> path_;
};

}  // namespace quil::linux_platform
