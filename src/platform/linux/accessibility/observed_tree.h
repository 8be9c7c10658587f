#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

#include "platform/accessibility.h"
#include "platform/linux/accessibility/attributes.h"
#include "platform/linux/accessibility/cached_tree.h"
#include "platform/linux/accessibility/screen_places.h"
#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"

namespace quil::linux_platform {

/// One element of an observed tree.
struct ObservedElement {
    Reference reference;
    Facts facts;
    /// As many as were wanted; belong to the tree.
    std::vector<ObservedElement*> children;
    /// Null for the root.
    ObservedElement* parent = nullptr;
    int depth = 0;

    bool isBegun = false;
    bool isComplete = false;
    bool wantsChildren = false;
};

/// What a walk is about to read, fetched with many calls under way at a time: of the elements that
/// come first, depth first, as many as the walk may visit, and hardly more.
class ObservedTree {
  public:
    /// Fetches the tree below an element. Bounded: what is not there in time stays unknown.
    ObservedTree(AccessibilityBus& bus, ScreenPlaces& places, const Reference& root,
                 const ObservationPlan& plan);
    ObservedTree(const ObservedTree&) = delete;
    ObservedTree& operator=(const ObservedTree&) = delete;

    const Reference& root() const { return root_->reference; }
    /// The element, when the walk may come to it.
    ObservedElement* find(const Reference& reference);
    /// Whether the time for the whole observation is over.
    bool isOverdue() const;

  private:
    ObservedElement& element(const Reference& reference);
    FactSet needs(const Facts& facts) const;
    void useCache(const Reference& root);
    void fetch(const Reference& root);
    /// Looks again at documents that are empty because their browser has only just been asked.
    void awaitDocuments();
    void schedule();
    void scheduleAll();
    void scheduleFirst();
    void work(ObservedElement& element, std::int64_t maximumChildren);
    void begin(ObservedElement& element);
    void proceed(ObservedElement& element);
    void ask(ObservedElement& element, FactSet wanted, std::int64_t maximumChildren);
    void takeChildren(ObservedElement& element);
    void findScrollBars();
    void findScrollBar(ObservedElement& element);
    void placeOnScreen(ScreenPlaces& places);

    AccessibilityBus& bus_;
    const std::int64_t maximumElements_;
    const int maximumDepth_;
    /// When the whole observation has to end.
    const BusDeadline end_;
    std::vector<const Attribute*> attributes_;
    const bool wantsActions_;

    /// Of elements that the walk does not come to, what the search for scroll bars needs.
    std::unordered_map<Reference, Facts, ReferenceHash> beyond_;
    /// Null when the elements are asked one by one.
    std::unique_ptr<CachedTree> cache_;
    std::unordered_map<Reference, ObservedElement, ReferenceHash> elements_;
    ObservedElement* root_ = nullptr;
    /// Elements that are being asked.
    int active_ = 0;
    bool isScheduling_ = false;
    /// Elements that may be asked more, in the order in which they were found.
    std::deque<ObservedElement*> work_;
    /// How many elements the tree has at least. While they all fit into the walk, their order does
    /// not matter.
    std::int64_t expected_ = 1;
    int answersSinceScheduled_ = 0;
};

}  // namespace quil::linux_platform
