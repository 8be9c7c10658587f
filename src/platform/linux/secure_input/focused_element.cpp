#include "platform/linux/secure_input/focused_element.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <utility>

#include "platform/linux/atspi/element_query.h"

namespace quil::linux_platform {
namespace {

constexpr std::chrono::milliseconds kSearchTimeout{500};
constexpr std::int64_t kMaximumChildren = 256;

struct Candidate {
    Reference reference;
    Facts facts;
};

/// Asks all of them, which costs the time of one.
void ask(AccessibilityBus& bus, std::deque<Candidate>& candidates, FactSet wanted) {
    for (Candidate& candidate : candidates) {
        AtspiProgram& program = bus.introducedProgram(candidate.reference.busName);
        queryFacts({program, candidate.reference.path, kMaximumChildren}, wanted, candidate.facts,
                   [] {});
    }
    bus.waitForReplies();
}

}  // namespace

std::optional<Reference> focusedElement(AccessibilityBus& bus, const Reference& root) {
    std::deque<Candidate> focused;
    std::deque<Candidate> level;
    level.push_back({root, {}});
    const auto deadline = BusClock::now() + kSearchTimeout;
    while (!level.empty() && BusClock::now() < deadline) {
        ask(bus, level, {Fact::states, Fact::childCount});
        std::erase_if(level, [](const Candidate& candidate) {
            // Not all toolkits say what is showing.
            return !candidate.facts.states.has(AtspiState::visible) ||
                   candidate.facts.states.has(AtspiState::managesDescendants);
        });
        for (const Candidate& candidate : level) {
            if (candidate.facts.states.has(AtspiState::focused)) focused.push_back(candidate);
        }
        ask(bus, level, {Fact::children});
        std::deque<Candidate> next;
        for (Candidate& candidate : level) {
            for (Reference& child : candidate.facts.children) {
                next.push_back({std::move(child), {}});
            }
        }
        level = std::move(next);
    }
    if (focused.empty()) return {};
    ask(bus, focused, {Fact::role});
    const auto secret = std::find_if(
        focused.begin(), focused.end(),
        [](const Candidate& candidate) { return candidate.facts.role == AtspiRole::passwordText; });
    return (secret == focused.end() ? focused.back() : *secret).reference;
}

}  // namespace quil::linux_platform
