#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/accessibility/attributes.h"
#include "platform/linux/accessibility/cached_tree.h"
#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/accessibility/observed_element.h"
#include "platform/linux/accessibility/window_origins.h"
#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"

namespace quil::linux_platform {

/// What a walk is about to read, fetched with many calls under way at a time: of the elements that
/// come first, depth first, as many as the walk may visit, and hardly more.
class ObservedTree {
  public:
    /// Fetches the tree below an element. Bounded: what is not there in time stays unknown.
    ObservedTree(AccessibilityBus& bus, WindowOrigins& origins, const Reference& root,
                 const ObservationPlan& plan);
    ObservedTree(const ObservedTree&) = delete;
    ObservedTree& operator=(const ObservedTree&) = delete;

    const Reference& root() const { return root_->reference; }
    /// The element, when the walk may reach it.
    ObservedElement* find(const Reference& reference);
    std::int64_t maximumElements() const { return maximumElements_; }
    /// Whether the time for the whole observation is over.
    bool isOverdue() const;

  private:
    ObservedElement& element(const Reference& reference);
    FactSet needs(const ObservedElement& element) const;
    void useCache(const Reference& root);
    void fetch(const Reference& root);
    void count();
    void fetchUpTo(std::int64_t maximumElements);
    /// Looks again at documents that are empty because their browser has only just been asked.
    void awaitDocuments();
    void schedule();
    void passFinished();
    void begin(ObservedElement& element);
    void proceed(ObservedElement& element);
    FactSet withName(const ObservedElement& element, FactSet wanted);
    void ask(ObservedElement& element, FactSet wanted, std::int64_t maximumChildren);
    void takeChildren(ObservedElement& element);
    void connect();
    void findEditableChild(ObservedElement& element);
    /// Facts of an element that the walk does not reach; null when they cannot be read.
    const Facts* readBeyond(const Reference& reference, const Needs& needs);
    void findScrollBars();
    void findScrollBar(ObservedElement& element);

    AccessibilityBus& bus_;
    const std::int64_t maximumElements_;
    const int maximumDepth_;
    /// When the whole observation has to end.
    const BusDeadline end_;
    std::vector<const Attribute*> attributes_;
    bool wantsActions_;

    /// Of elements that the walk does not reach, what is needed of them all the same.
    std::unordered_map<Reference, Facts, ReferenceHash> beyond_;
    /// Null when the elements are asked one by one.
    std::unique_ptr<CachedTree> cache_;
    /// Whether the elements beyond the walk are to be counted, too.
    bool isCounting_ = false;
    std::unordered_map<Reference, ObservedElement, ReferenceHash> elements_;
    ObservedElement* root_ = nullptr;
    /// So many elements are fetched, in the order of the walk.
    std::int64_t reach_ = 0;
    /// All elements before this one are finished: nothing more is asked of them, and what they list
    /// stays as it is.
    WalkPosition finished_;
    /// Questions to elements that are under way.
    int active_ = 0;
    int repliesSinceLook_ = 0;
    bool isScheduling_ = false;
};

}  // namespace quil::linux_platform
