#include "platform/linux/accessibility/element_reader.h"

#include <unordered_map>

#include "platform/linux/accessibility/attributes.h"
#include "platform/linux/accessibility/scroll_bars.h"
#include "platform/linux/atspi/element_query.h"

namespace quil::linux_platform {

Needs needsOf(FactSet wanted) {
    return [wanted](const Facts& known) { return wanted.without(known.asked); };
}

std::int32_t readFacts(AccessibilityBus& bus, const Reference& element, const Needs& needs,
                       Facts& facts, const ReadingLimits& limits) {
    AtspiProgram& program = bus.introducedProgram(element.busName);
    for (FactSet next = needs(facts); !next.isEmpty(); next = needs(facts)) {
        // Distinguishes a missing element from a missing attribute.
        next.add(FactSet{Fact::states}.without(facts.asked));
        queryFacts({program, element.path, limits.maximumChildren}, next, facts, [] {});
        bus.waitForReplies(limits.deadline);
        if (const std::int32_t code = elementCode(facts); code != 0) return code;
    }
    return 0;
}

void readScrollBar(AccessibilityBus& bus, const Reference& element, Facts& facts) {
    if (facts.asked.has(Fact::scrollBar)) return;
    const ReadingLimits limits{.maximumChildren = kScrollBarCandidates};
    const std::int32_t code = readFacts(bus, element, needsForScrollBarSearch, facts, limits);
    facts.received(Fact::scrollBar, code);
    if (code != 0) return;
    std::unordered_map<Reference, Facts, ReferenceHash> others;
    facts.scrollBar = findScrollBar(facts, [&](const Reference& other) {
        Facts& known = others[other];
        return readFacts(bus, other, needsForScrollBarSearch, known, limits) == 0 ? &known
                                                                                  : nullptr;
    });
}

}  // namespace quil::linux_platform
