#include "platform/linux/accessibility/element_reader.h"

#include <limits>

#include "platform/linux/accessibility/attributes.h"
#include "platform/linux/accessibility/fact_questions.h"

namespace quil::linux_platform {

std::int32_t readFacts(AccessibilityBus& bus, const Reference& element, const Needs& needs,
                       Facts& facts) {
    AtspiProgram& program = bus.introducedProgram(element.busName);
    for (FactSet next = needs(facts); !next.isEmpty(); next = needs(facts)) {
        // Tells a missing element from a missing attribute.
        next.add(FactSet{Fact::states}.without(facts.asked));
        askFacts({program, element.path, std::numeric_limits<std::int32_t>::max()}, next, facts,
                 [] {});
        bus.waitForAnswers();
        if (const std::int32_t code = elementCode(facts); code != 0) return code;
    }
    return 0;
}

}  // namespace quil::linux_platform
