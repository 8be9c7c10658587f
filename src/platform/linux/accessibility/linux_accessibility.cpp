#include "platform/linux/accessibility/linux_accessibility.h"

#include "platform/linux/accessibility/application_lookup.h"
#include "platform/linux/accessibility/element_actions.h"
#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/accessibility/focused_window.h"
#include "platform/linux/accessibility/messages.h"

namespace quil::linux_platform {

ElementRef LinuxAccessibility::createApplication(std::int32_t pid) {
    return std::make_shared<AtspiElement>(pid);
}

ElementRef LinuxAccessibility::makeElement(const Reference& reference) {
    return std::make_shared<AtspiElement>(reference, bus_.generation());
}

std::optional<Reference> LinuxAccessibility::resolve(const ElementRef& element) {
    const auto* handle = dynamic_cast<const AtspiElement*>(element.get());
    if (!handle || !bus_.connect()) return {};
    if (handle->pid() == 0) {
        if (handle->generation() != bus_.generation()) return {};
        return handle->reference();
    }
    const auto names = busNamesOf(bus_, handle->pid());
    if (names.empty()) return {};
    return Reference{names.front(), atspi::kRootPath};
}

std::int32_t LinuxAccessibility::copyAttributeValue(const ElementRef& element,
                                                    std::string_view attribute,
                                                    std::optional<Value>& value) {
    if (attribute == "AXFocusedWindow") return copyFocusedWindow(element, value);
    const Attribute* known = findAttribute(attribute);
    if (!known) return kAxAttributeUnsupported;
    const auto reference = resolve(element);
    if (!reference) return kAxCannotComplete;
    Facts facts;
    const std::int32_t code = readFacts(bus_, *reference, known->needs, facts);
    if (code != 0) return code;
    return known->read(
        facts, [&](const Reference& child) { return makeElement(child); }, value);
}

std::int32_t LinuxAccessibility::copyFocusedWindow(const ElementRef& element,
                                                   std::optional<Value>& value) {
    const auto* handle = dynamic_cast<const AtspiElement*>(element.get());
    if (!handle) return kAxIllegalArgument;
    if (handle->pid() == 0) return kAxAttributeUnsupported;
    if (!bus_.connect()) return kAxCannotComplete;
    const auto names = busNamesOf(bus_, handle->pid());
    if (names.empty()) return kAxCannotComplete;
    const auto window = focusedWindow(bus_, display_, handle->pid(), names);
    if (!window) return kAxNoValue;
    value = Value(makeElement(*window));
    return 0;
}

std::int32_t LinuxAccessibility::copyActionNames(const ElementRef& element,
                                                 std::optional<Value>& names) {
    const auto reference = resolve(element);
    if (!reference) return kAxCannotComplete;
    Facts facts;
    std::int32_t code = readFacts(bus_, *reference, needsForActions, facts);
    if (code == 0) code = actionsCode(facts);
    if (code != 0) return code;
    Value::List list;
    for (std::string& name : actionNames(facts)) list.emplace_back(std::move(name));
    names = Value(std::move(list));
    return 0;
}

std::int32_t LinuxAccessibility::performAction(const ElementRef& element, std::string_view action) {
    const auto reference = resolve(element);
    return reference ? performElementAction(bus_, *reference, action) : kAxCannotComplete;
}

std::int32_t LinuxAccessibility::setAttributeValue(const ElementRef& element,
                                                   std::string_view attribute, const Value& value) {
    const auto reference = resolve(element);
    if (!reference) return kAxCannotComplete;
    if (attribute == "AXFocused") return setElementFocused(bus_, *reference, value);
    if (attribute == "AXValue") return setElementValue(bus_, *reference, value);
    return kAxAttributeUnsupported;
}

std::unique_ptr<Observation> LinuxAccessibility::beginObservation(const ObservationPlan&) {
    return nullptr;
}

}  // namespace quil::linux_platform
