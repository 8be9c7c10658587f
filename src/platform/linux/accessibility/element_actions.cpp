#include "platform/linux/accessibility/element_actions.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <optional>
#include <string>
#include <thread>

#include "platform/accessibility.h"
#include "platform/linux/accessibility/action_names.h"
#include "platform/linux/accessibility/attributes.h"
#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/atspi/messages.h"

namespace quil::linux_platform {
namespace {

/// Points of a line of text, of those who scroll by lines.
constexpr double kLineHeight = 18;
/// For a text that a program changes after it has answered, as browsers do.
constexpr std::chrono::milliseconds kChangePatience{500};
constexpr std::chrono::milliseconds kLookInterval{10};

/// A call that answers with a boolean, or with nothing.
template <typename... Values>
std::int32_t command(AccessibilityBus& bus, const Reference& element, const char* interface,
                     const char* member, const char* signature = "", Values... values) {
    std::int32_t code = kAxFailure;
    bus.introducedProgram(element.busName)
        .peer()
        .call(
            element.path.c_str(), interface, member,
            [&](Answer answer) {
                code = answer.code;
                int isDone = 1;
                if (!answer.message) return;
                const bool isBoolean = sd_bus_message_read_basic(answer.message, 'b', &isDone) > 0;
                if (isBoolean && !isDone) code = kAxFailure;
            },
            signature, values...);
    bus.waitForAnswers();
    return code;
}

std::int32_t setNumber(AccessibilityBus& bus, const Reference& element, double number) {
    return command(bus, element, atspi::kProperties, "Set", "ssv", atspi::kValue, "CurrentValue",
                   "d", number);
}

std::optional<double> numberFrom(const Value& value) {
    if (const auto number = value.number()) return number;
    const std::string* text = value.string();
    if (!text) return {};
    double number = 0;
    const char* end = text->data() + text->size();
    const auto parsed = std::from_chars(text->data(), end, number);
    const bool isNumber = parsed.ec == std::errc() && parsed.ptr == end && std::isfinite(number);
    return isNumber ? std::optional(number) : std::nullopt;
}

/// A property of a range of numbers.
std::optional<double> rangeProperty(AccessibilityBus& bus, const Reference& element,
                                    const char* name) {
    std::optional<double> value;
    bus.introducedProgram(element.busName)
        .peer()
        .call(
            element.path.c_str(), atspi::kProperties, "Get",
            [&](Answer answer) {
                if (answer.message) value = readVariant(answer.message, "d", readDouble);
            },
            "ss", atspi::kValue, name);
    bus.waitForAnswers();
    return value;
}

/// Scrolls by what the pane shows at a time. Scroll bars count in the pane's own units, of which
/// the bar does not say how many a page has: for all but short contents they are points.
std::int32_t scrollByPage(AccessibilityBus& bus, const Facts& pane, bool isDown) {
    const Reference& bar = pane.scrollBar;
    const auto position = rangeProperty(bus, bar, "CurrentValue");
    const auto minimum = rangeProperty(bus, bar, "MinimumValue");
    const auto maximum = rangeProperty(bus, bar, "MaximumValue");
    if (!position || !minimum || !maximum) return kAxCannotComplete;
    const auto step = rangeProperty(bus, bar, "MinimumIncrement");
    const double unit = step == 1.0 ? kLineHeight : 1.0;
    const double page = std::max(std::floor(pane.extents.height / unit), 1.0);
    const double wanted = *position + (isDown ? page : -page);
    return setNumber(bus, bar, std::clamp(wanted, *minimum, std::max(*minimum, *maximum)));
}

FactSet needsForSetting(const Facts& facts) {
    return FactSet{Fact::role, Fact::states, Fact::interfaces}.without(facts.asked);
}

FactSet needsForText(const Facts& facts) {
    return FactSet{Fact::text}.without(facts.asked);
}

/// The element's text, as far as it is read; nothing when it cannot be had.
std::optional<std::string> textOf(AccessibilityBus& bus, const Reference& element) {
    Facts facts;
    const std::int32_t code = readFacts(bus, element, needsForText, facts);
    return code == 0 && facts.knows(Fact::text) ? std::optional(facts.text) : std::nullopt;
}

std::int32_t setText(AccessibilityBus& bus, const Reference& element, const std::string& text) {
    const auto before = textOf(bus, element);
    const std::int32_t code =
        command(bus, element, atspi::kEditableText, "SetTextContents", "s", text.c_str());
    if (code != 0 || !before || *before == text) return code;
    // Some programs say that they have done it and do nothing (Firefox in pages).
    const auto deadline = std::chrono::steady_clock::now() + kChangePatience;
    while (textOf(bus, element) == before) {
        if (std::chrono::steady_clock::now() >= deadline) return kAxFailure;
        std::this_thread::sleep_for(kLookInterval);
    }
    return 0;
}

}  // namespace

std::int32_t performElementAction(AccessibilityBus& bus, const Reference& element,
                                  std::string_view action) {
    Facts facts;
    if (action == kScrollUpByPage || action == kScrollDownByPage) {
        readScrollBar(bus, element, facts);
        if (facts.code(Fact::scrollBar) != 0) return facts.code(Fact::scrollBar);
        readFacts(bus, element, findAttribute("AXSize")->needs, facts);
        if (facts.scrollBar.path.empty()) return kAxActionUnsupported;
        return scrollByPage(bus, facts, action == kScrollDownByPage);
    }
    std::int32_t code = readFacts(bus, element, needsForActions, facts);
    if (code == 0) code = actionsCode(facts);
    if (code != 0) return code;
    const auto names = protocolNames(facts.actions, facts.role);
    const auto named = std::find(names.begin(), names.end(), action);
    if (named == names.end() || action.empty()) return kAxActionUnsupported;
    return command(bus, element, atspi::kAction, "DoAction", "i",
                   static_cast<std::int32_t>(named - names.begin()));
}

std::int32_t setElementFocused(AccessibilityBus& bus, const Reference& element,
                               const Value& value) {
    if (value.boolean() != true) return kAxIllegalArgument;
    Facts facts;
    const std::int32_t code = readFacts(bus, element, needsForSetting, facts);
    if (code != 0) return code;
    if (!facts.interfaces.has(AtspiInterface::component)) return kAxAttributeUnsupported;
    return command(bus, element, atspi::kComponent, "GrabFocus");
}

std::int32_t setElementValue(AccessibilityBus& bus, const Reference& element, const Value& value) {
    Facts facts;
    const std::int32_t code = readFacts(bus, element, needsForSetting, facts);
    if (code != 0) return code;
    const bool isNumeric = facts.interfaces.has(AtspiInterface::value) && !hasTextValue(facts);
    if (isNumeric) {
        const auto number = numberFrom(value);
        return number ? setNumber(bus, element, *number) : kAxIllegalArgument;
    }
    if (!facts.interfaces.has(AtspiInterface::editableText)) return kAxAttributeUnsupported;
    // The bus cannot carry NUL.
    if (!value.string() || value.string()->find('\0') != std::string::npos) {
        return kAxIllegalArgument;
    }
    // What is read of a password need not differ from what was read of the one before.
    if (facts.role == AtspiRole::passwordText) {
        return command(bus, element, atspi::kEditableText, "SetTextContents", "s",
                       value.string()->c_str());
    }
    return setText(bus, element, *value.string());
}

}  // namespace quil::linux_platform
