#include "platform/linux/accessibility/tree_size.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <unordered_map>
#include <utility>

#include "platform/linux/accessibility/attributes.h"
#include "platform/linux/atspi/fact_questions.h"

namespace quil::linux_platform {
namespace {

constexpr std::chrono::milliseconds kPatience{1000};
constexpr std::int32_t kLongestList = 1000;
/// Elements that are asked at a time.
constexpr int kMostActive = 128;

class TreeCount {
  public:
    explicit TreeCount(AccessibilityBus& bus) : bus_(bus) {}

    bool isSmall(const Reference& root) {
        const auto deadline = BusClock::now() + kPatience;
        add(root);
        askNext();
        while (active_ > 0) bus_.waitForAnswers(deadline);
        return isSmall_;
    }

  private:
    /// An element and its facts. Each stays where it is.
    using Element = std::pair<const Reference, Facts>;

    void add(const Reference& reference) {
        const auto [element, isNew] = elements_.try_emplace(reference);
        if (isNew) waiting_.push_back(&*element);
    }

    void askNext() {
        while (isSmall_ && active_ < kMostActive && !waiting_.empty()) {
            Element& element = *waiting_.front();
            waiting_.pop_front();
            ask(element);
        }
    }

    void ask(Element& element) {
        auto& [reference, facts] = element;
        AtspiProgram& program = bus_.program(reference.busName);
        ++active_;
        askFacts({program, reference.path, kLongestList}, findAttribute("AXChildren")->needs(facts),
                 facts, [this, &element] {
                     --active_;
                     answered(element);
                     askNext();
                 });
    }

    /// First comes the number of children, then, if there are any, their list. One that is not told
    /// leaves the size of the tree unknown.
    void answered(Element& element) {
        const Facts& facts = element.second;
        if (facts.asked.has(Fact::children)) {
            isSmall_ = isSmall_ && facts.knows(Fact::children);
            for (const Reference& child : facts.children) add(child);
            return;
        }
        count_ += std::max(facts.childCount, 0);
        isSmall_ = isSmall_ && facts.knows(Fact::childCount) && facts.childCount <= kLongestList &&
                   count_ <= kSmallTree;
        if (facts.childCount > 0) waiting_.push_back(&element);
    }

    AccessibilityBus& bus_;
    std::unordered_map<Reference, Facts, ReferenceHash> elements_;
    /// Elements that are to be asked the next thing.
    std::deque<Element*> waiting_;
    int active_ = 0;
    /// Elements that there are at least.
    std::int64_t count_ = 1;
    bool isSmall_ = true;
};

}  // namespace

bool isSmallTree(AccessibilityBus& bus, const Reference& root) {
    return TreeCount(bus).isSmall(root);
}

}  // namespace quil::linux_platform
