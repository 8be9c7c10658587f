#include "platform/simulated/services.h"

namespace quil::simulated {
namespace {

/// The element of a process that is no application.
class UnknownElement : public AccessibilityElement {};

/// The simulated element behind a handle; null for `UnknownElement`.
Element* own(const ElementRef& element) {
    return const_cast<Element*>(dynamic_cast<const Element*>(element.get()));
}

std::string nameOf(const Element* element) {
    if (!element) return "nobody";
    return element->id().empty() ? element->role() : element->id();
}

std::string idOf(const Element* element) {
    return element ? element->id() : std::string();
}

}  // namespace

ElementRef SimulatedAccessibility::createApplication(std::int32_t pid) {
    const auto guard = desktop_.lock();
    if (Application* application = desktop_.findApplication(pid)) return application->ref();
    return std::make_shared<UnknownElement>();
}

std::int32_t SimulatedAccessibility::copyAttributeValue(const ElementRef& element,
                                                        std::string_view attribute,
                                                        std::optional<Value>& value) {
    const auto guard = desktop_.lock();
    const Element* target = own(element);
    const auto failure = desktop_.enter("copyAttributeValue", {attribute, idOf(target)});
    if (failure) return failure->code;
    if (!desktop_.permissions.accessibility) return kAxApiDisabled;
    return target ? target->read(attribute, value) : kAxInvalidUIElement;
}

std::int32_t SimulatedAccessibility::copyActionNames(const ElementRef& element,
                                                     std::optional<Value>& names) {
    const auto guard = desktop_.lock();
    const Element* target = own(element);
    const auto failure = desktop_.enter("copyActionNames", {idOf(target)});
    if (failure) return failure->code;
    if (!desktop_.permissions.accessibility) return kAxApiDisabled;
    return target ? target->readActionNames(names) : kAxInvalidUIElement;
}

std::int32_t SimulatedAccessibility::performAction(const ElementRef& element,
                                                   std::string_view action) {
    const auto guard = desktop_.lock();
    Element* target = own(element);
    const auto failure = desktop_.enter("performAction", {action, idOf(target)});
    std::int32_t code = kAxInvalidUIElement;
    if (failure) {
        code = failure->code;
    } else if (!desktop_.permissions.accessibility) {
        code = kAxApiDisabled;
    } else if (target) {
        code = target->perform(desktop_, action);
    }
    desktop_.record(ElementCall{.operation = ElementCall::Operation::performAction,
                                .element = nameOf(target),
                                .name = std::string(action),
                                .value = {},
                                .result = code});
    return code;
}

std::int32_t SimulatedAccessibility::setAttributeValue(const ElementRef& element,
                                                       std::string_view attribute,
                                                       const Value& value) {
    const auto guard = desktop_.lock();
    Element* target = own(element);
    const auto failure = desktop_.enter("setAttributeValue", {attribute, idOf(target)});
    std::int32_t code = kAxInvalidUIElement;
    if (failure) {
        code = failure->code;
    } else if (!desktop_.permissions.accessibility) {
        code = kAxApiDisabled;
    } else if (target) {
        code = target->set(desktop_, attribute, value);
    }
    desktop_.record(ElementCall{.operation = ElementCall::Operation::setAttributeValue,
                                .element = nameOf(target),
                                .name = std::string(attribute),
                                .value = value,
                                .result = code});
    return code;
}

namespace {

/// Notices the changes that come at their time. Waiting lets the desktop's time pass.
class ScriptedChanges : public ChangeWatch {
  public:
    explicit ScriptedChanges(SimulatedDesktop& desktop) : desktop_(desktop) {}
    bool wait(std::uint64_t microseconds) override {
        return desktop_.passUntilChange(static_cast<double>(microseconds) / 1e6);
    }

  private:
    SimulatedDesktop& desktop_;
};

}  // namespace

std::unique_ptr<ChangeWatch> SimulatedAccessibility::watchChanges(std::int32_t) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("watchChanges")) return nullptr;
    return std::make_unique<ScriptedChanges>(desktop_);
}

std::unique_ptr<Observation> SimulatedAccessibility::beginObservation(const ObservationPlan&) {
    const auto guard = desktop_.lock();
    desktop_.enter("beginObservation");
    return nullptr;
}

}  // namespace quil::simulated
