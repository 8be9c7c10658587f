#include "platform/linux/accessibility/accessibility.h"

#include <chrono>
#include <thread>

#include "platform/linux/accessibility/application_windows.h"
#include "platform/linux/accessibility/atspi_change_watch.h"
#include "platform/linux/accessibility/element_actions.h"
#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/accessibility/focused_window.h"
#include "platform/linux/accessibility/plain_window.h"
#include "platform/linux/atspi/messages.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

constexpr std::chrono::milliseconds kWindowTimeout{700};
constexpr std::chrono::milliseconds kWindowPollInterval{20};

bool ownsActiveWindow(X11Display& display, std::int32_t pid) {
    const auto connection = display.connection();
    const auto window = connection ? activeWindow(*connection) : std::nullopt;
    return window && window->pid == pid;
}

const PlainWindow* asPlainWindow(const ElementRef& element) {
    return dynamic_cast<const PlainWindow*>(element.get());
}

}  // namespace

ElementRef LinuxAccessibility::createApplication(std::int32_t pid) {
    return std::make_shared<AtspiElement>(pid);
}

ElementRef LinuxAccessibility::makeElement(const Reference& reference,
                                           std::optional<std::string> title) {
    return std::make_shared<AtspiElement>(reference, bus_.generation(), std::move(title));
}

/// Ends with the walk.
class LinuxAccessibility::CurrentObservation : public Observation {
  public:
    explicit CurrentObservation(LinuxAccessibility& accessibility)
        : accessibility_(accessibility) {}
    ~CurrentObservation() override {
        accessibility_.tree_ = nullptr;
        accessibility_.observedRoot_ = nullptr;
    }

  private:
    LinuxAccessibility& accessibility_;
};

std::unique_ptr<Observation> LinuxAccessibility::beginObservation(const ObservationPlan& plan) {
    const auto root = resolve(plan.root);
    if (!root) return nullptr;
    observedGeneration_ = bus_.generation();
    tree_ = std::make_unique<ObservedTree>(bus_, origins_, *root, plan);
    observedRoot_ = plan.root;
    return std::make_unique<CurrentObservation>(*this);
}

std::unique_ptr<ChangeWatch> LinuxAccessibility::watchChanges(std::int32_t pid) {
    return AtspiChangeWatch::begin(pid);
}

ObservedElement* LinuxAccessibility::observed(const ElementRef& element) {
    if (!tree_ || observedGeneration_ != bus_.generation()) return nullptr;
    if (element == observedRoot_) return tree_->find(tree_->root());
    const auto* handle = dynamic_cast<const AtspiElement*>(element.get());
    const bool isFromTree =
        handle && handle->pid() == 0 && handle->generation() == bus_.generation();
    return isFromTree ? tree_->find(handle->reference()) : nullptr;
}

std::int32_t LinuxAccessibility::readAnew(const Reference& element, const Needs& needs,
                                          bool wantsScrollBar, Facts& facts) {
    const bool wasLocated = facts.asked.has(Fact::extents);
    ReadingLimits limits;
    if (tree_) limits.maximumChildren = tree_->maximumElements() + 1;
    const std::int32_t code = readFacts(bus_, element, needs, facts, limits);
    if (code == 0 && wantsScrollBar) readScrollBar(bus_, element, facts);
    if (!wasLocated && facts.knows(Fact::extents)) origins_.locate(element, facts);
    return code;
}

std::int32_t LinuxAccessibility::read(const ElementRef& element, const Needs& needs,
                                      bool wantsScrollBar,
                                      const std::function<std::int32_t(const Facts&)>& use) {
    std::int32_t code = 0;
    if (ObservedElement* known = observed(element)) {
        code = elementCode(known->facts);
        const bool isEnough = needs(known->facts).isEmpty() &&
                              (!wantsScrollBar || known->facts.asked.has(Fact::scrollBar));
        if (code == 0 && !isEnough) {
            code = tree_->isOverdue()
                       ? kAxCannotComplete
                       : readAnew(known->reference, needs, wantsScrollBar, known->facts);
        }
        return code == 0 ? use(known->facts) : code;
    }
    const auto reference = resolve(element);
    if (!reference) return kAxCannotComplete;
    Facts facts;
    code = readAnew(*reference, needs, wantsScrollBar, facts);
    return code == 0 ? use(facts) : code;
}

std::optional<Reference> LinuxAccessibility::resolve(const ElementRef& element) {
    const auto* handle = dynamic_cast<const AtspiElement*>(element.get());
    if (!handle || !bus_.connect()) return {};
    if (handle->pid() == 0) {
        if (handle->generation() != bus_.generation()) return {};
        return handle->reference();
    }
    const auto names = lookup_.busNamesOf(handle->pid());
    if (names.empty()) return {};
    if (names.size() == 1) return Reference{names.front(), atspi::kRootPath};
    // Of several toolkits in one process, one that shows windows.
    const auto windows = applicationWindows(bus_, names);
    const auto& name = windows.empty() ? names.front() : windows.front().reference.busName;
    return Reference{name, atspi::kRootPath};
}

std::int32_t LinuxAccessibility::copyAttributeValue(const ElementRef& element,
                                                    std::string_view attribute,
                                                    std::optional<Value>& value) {
    if (attribute == "AXFocusedWindow") return copyFocusedWindow(element, value);
    if (const auto* window = asPlainWindow(element)) {
        return window->copyAttributeValue(attribute, value);
    }
    const Attribute* known = findAttribute(attribute);
    if (!known) return kAxAttributeUnsupported;
    const auto* handle = dynamic_cast<const AtspiElement*>(element.get());
    if (attribute == "AXTitle" && handle && handle->title()) {
        value = Value(*handle->title());
        return 0;
    }
    const ElementMaker maker = [this](const Reference& child) { return makeElement(child); };
    return read(element, known->needs, false,
                [&](const Facts& facts) { return known->read(facts, maker, value); });
}

std::int32_t LinuxAccessibility::copyFocusedWindow(const ElementRef& element,
                                                   std::optional<Value>& value) {
    const auto* handle = dynamic_cast<const AtspiElement*>(element.get());
    if (!handle) return kAxIllegalArgument;
    if (handle->pid() == 0) return kAxAttributeUnsupported;
    if (!bus_.connect()) return kAxCannotComplete;
    const auto names = lookup_.busNamesOf(handle->pid());
    if (names.empty()) return copyPlainWindow(handle->pid(), value);
    auto window = focusedWindow(bus_, display_, handle->pid(), names);
    // A program that has only just joined the bus may not list its windows yet.
    const auto deadline = bus_.program(names.front()).firstContact() + kWindowTimeout;
    while (!window && BusClock::now() < deadline && ownsActiveWindow(display_, handle->pid())) {
        std::this_thread::sleep_for(kWindowPollInterval);
        window = focusedWindow(bus_, display_, handle->pid(), names);
    }
    if (!window) return kAxNoValue;
    value = Value(makeElement(window->reference, std::move(window->title)));
    return 0;
}

std::int32_t LinuxAccessibility::copyPlainWindow(std::int32_t pid, std::optional<Value>& value) {
    if (!lookup_.isUnreachable(pid)) return kAxCannotComplete;
    const auto connection = display_.connection();
    auto window = connection ? activeWindow(*connection) : std::nullopt;
    if (!window || window->pid != pid) return kAxNoValue;
    value = Value(ElementRef(std::make_shared<PlainWindow>(std::move(*window))));
    return 0;
}

std::int32_t LinuxAccessibility::copyActionNames(const ElementRef& element,
                                                 std::optional<Value>& names) {
    if (asPlainWindow(element)) return kAxAttributeUnsupported;
    return read(element, needsForActions, true, [&](const Facts& facts) {
        const std::int32_t code = actionsCode(facts);
        if (code != 0) return code;
        Value::List list;
        for (std::string& name : actionNames(facts)) list.emplace_back(std::move(name));
        names = Value(std::move(list));
        return code;
    });
}

std::int32_t LinuxAccessibility::performAction(const ElementRef& element, std::string_view action) {
    if (asPlainWindow(element)) return kAxActionUnsupported;
    const auto reference = resolve(element);
    return reference ? performElementAction(bus_, display_, origins_, *reference, action)
                     : kAxCannotComplete;
}

std::int32_t LinuxAccessibility::setAttributeValue(const ElementRef& element,
                                                   std::string_view attribute, const Value& value) {
    if (asPlainWindow(element)) return kAxAttributeUnsupported;
    const auto reference = resolve(element);
    if (!reference) return kAxCannotComplete;
    if (attribute == "AXFocused") return setElementFocused(bus_, *reference, value);
    if (attribute == "AXValue") return setElementValue(bus_, *reference, value);
    return kAxAttributeUnsupported;
}

}  // namespace quil::linux_platform
