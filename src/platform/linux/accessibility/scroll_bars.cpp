#include "platform/linux/accessibility/scroll_bars.h"

#include <algorithm>

namespace quil::linux_platform {
namespace {

struct Candidate {
    Reference range;
    States states;
};

/// The bar's range of numbers, which some toolkits put into a child.
void addRange(const Reference& bar, const FactsOf& factsOf, std::vector<Candidate>& candidates) {
    const Facts* facts = factsOf(bar);
    if (!facts) return;
    if (facts->interfaces.has(AtspiInterface::value)) {
        candidates.push_back({bar, facts->states});
    } else if (!facts->children.empty()) {
        const Facts* inner = factsOf(facts->children.front());
        if (inner && inner->interfaces.has(AtspiInterface::value)) {
            candidates.push_back({facts->children.front(), facts->states});
        }
    }
}

bool isScrollBar(const Facts* facts) {
    return facts && facts->role == AtspiRole::scrollBar;
}

}  // namespace

FactSet needsForScrollBarSearch(const Facts& facts) {
    const FactSet first =
        FactSet{Fact::role, Fact::states, Fact::interfaces, Fact::childCount}.without(facts.asked);
    return first.isEmpty() ? FactSet{Fact::children}.without(facts.asked) : first;
}

Reference findScrollBar(const Facts& element, const FactsOf& factsOf) {
    std::vector<Candidate> candidates;
    const std::size_t count = std::min<std::size_t>(element.children.size(), kScrollBarCandidates);
    // A container around nothing but a bar belongs to the bar.
    const bool isContainer = element.role == AtspiRole::filler && count == 1;
    for (std::size_t i = 0; i < count && !isContainer; ++i) {
        const Reference& child = element.children[i];
        const Facts* facts = factsOf(child);
        if (isScrollBar(facts)) {
            addRange(child, factsOf, candidates);
        } else if (facts && facts->role == AtspiRole::filler && facts->children.size() == 1) {
            const Reference& inner = facts->children.front();
            if (isScrollBar(factsOf(inner))) addRange(inner, factsOf, candidates);
        }
    }
    std::erase_if(candidates, [](const Candidate& candidate) {
        return candidate.states.has(AtspiState::horizontal);
    });
    const auto vertical = std::find_if(
        candidates.begin(), candidates.end(),
        [](const Candidate& candidate) { return candidate.states.has(AtspiState::vertical); });
    if (vertical != candidates.end()) return vertical->range;
    // Toolkits that do not say which is which have the vertical one last.
    return candidates.empty() ? Reference() : candidates.back().range;
}

}  // namespace quil::linux_platform
