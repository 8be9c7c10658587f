#include "platform/linux/accessibility/range_values.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "platform/linux/accessibility/element_calls.h"
#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/atspi/messages.h"

namespace quil::linux_platform {
namespace {

/// Steps that are taken where a number can be reached by them only.
constexpr double kMaximumSteps = 1000;

std::optional<std::int32_t> actionIndex(const Facts& facts, std::string_view oneName,
                                        std::string_view otherName) {
    const auto found =
        std::find_if(facts.actions.begin(), facts.actions.end(),
                     [&](const std::string& name) { return name == oneName || name == otherName; });
    if (found == facts.actions.end()) return {};
    return static_cast<std::int32_t>(found - facts.actions.begin());
}

/// Where Swing's numbers cannot be set, they can be stepped up and down.
std::int32_t stepTo(AccessibilityBus& bus, const Reference& element, double number, double before) {
    Facts facts;
    if (readFacts(bus, element, needsOf({Fact::actions}), facts) != 0) return kAxFailure;
    const bool isUp = number > before;
    const auto step = isUp ? actionIndex(facts, "increment", "Increase")
                           : actionIndex(facts, "decrement", "Decrease");
    if (!step) return kAxFailure;
    double now = before;
    for (double left = kMaximumSteps; left > 0; --left) {
        const double last = now;
        if (const auto code = command(bus, element, atspi::kAction, "DoAction", "i", *step)) {
            return code;
        }
        if (!numberChanges(bus, element, last)) return kAxFailure;
        now = rangeProperty(bus, element, "CurrentValue").value_or(last);
        const double length = std::abs(now - last);
        const double distance = isUp ? number - now : now - number;
        if (distance < length / 2) return 0;
        if (distance / length > kMaximumSteps) return kAxFailure;
    }
    return kAxFailure;
}

}  // namespace

std::optional<double> rangeProperty(AccessibilityBus& bus, const Reference& element,
                                    const char* name) {
    std::optional<double> value;
    bus.introducedProgram(element.busName)
        .peer()
        .call(
            element.path.c_str(), atspi::kProperties, "Get",
            [&](Reply reply) {
                if (reply.message) value = readVariant(reply.message, "d", readDouble);
            },
            "ss", atspi::kValue, name);
    bus.waitForReplies();
    return value;
}

bool numberChanges(AccessibilityBus& bus, const Reference& element, double before) {
    return becomesTrue([&] {
        const auto now = rangeProperty(bus, element, "CurrentValue");
        return now && *now != before;
    });
}

std::int32_t setRangeValue(AccessibilityBus& bus, const Reference& element, double number) {
    const auto before = rangeProperty(bus, element, "CurrentValue");
    const std::int32_t code = command(bus, element, atspi::kProperties, "Set", "ssv", atspi::kValue,
                                      "CurrentValue", "d", number);
    if (code != 0 || !before || *before == number) return code;
    if (numberChanges(bus, element, *before)) return 0;
    // It may be at the end of its range already.
    const auto minimum = rangeProperty(bus, element, "MinimumValue");
    const auto maximum = rangeProperty(bus, element, "MaximumValue");
    if (minimum && maximum &&
        std::clamp(number, *minimum, std::max(*minimum, *maximum)) == *before) {
        return 0;
    }
    return stepTo(bus, element, number, *before);
}

}  // namespace quil::linux_platform
