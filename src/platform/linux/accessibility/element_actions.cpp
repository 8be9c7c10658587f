#include "platform/linux/accessibility/element_actions.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>

#include "platform/accessibility.h"
#include "platform/linux/accessibility/action_names.h"
#include "platform/linux/accessibility/attributes.h"
#include "platform/linux/accessibility/element_calls.h"
#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/accessibility/element_value.h"
#include "platform/linux/accessibility/page_scrolling.h"
#include "platform/linux/accessibility/range_values.h"
#include "platform/linux/atspi/messages.h"

namespace quil::linux_platform {
namespace {

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

FactSet needsForSetting(const Facts& facts) {
    return FactSet{Fact::role, Fact::states, Fact::interfaces}.without(facts.asked);
}

FactSet needsForText(const Facts& facts) {
    return FactSet{Fact::text}.without(facts.asked);
}

/// The element's text, as far as it is read; nothing when it cannot be read.
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
    const bool hasChanged = becomesTrue([&] { return textOf(bus, element) != before; });
    return hasChanged ? 0 : kAxFailure;
}

}  // namespace

std::int32_t performElementAction(AccessibilityBus& bus, X11Display& display,
                                  WindowOrigins& origins, const Reference& element,
                                  std::string_view action) {
    Facts facts;
    std::int32_t code = readFacts(bus, element, needsForActions, facts);
    if (code == 0) code = actionsCode(facts);
    if (code != 0) return code;
    const auto names = protocolNames(facts.actions, facts.role);
    const auto named = std::find(names.begin(), names.end(), action);
    if (named != names.end() && !action.empty()) {
        return command(bus, element, atspi::kAction, "DoAction", "i",
                       static_cast<std::int32_t>(named - names.begin()));
    }
    const bool isDown = action == kScrollDownByPage;
    if (!isDown && action != kScrollUpByPage) return kAxActionUnsupported;
    return scrollByPage(bus, display, origins, element, isDown);
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
    if (takesNumber(facts)) {
        const auto number = numberFrom(value);
        if (number) return setRangeValue(bus, element, *number);
        // Such as a date.
        if (!facts.interfaces.has(AtspiInterface::editableText)) return kAxIllegalArgument;
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
