#pragma once

#include <functional>
#include <memory>

#include "platform/accessibility.h"
#include "platform/linux/accessibility/application_lookup.h"
#include "platform/linux/accessibility/attributes.h"
#include "platform/linux/accessibility/element.h"
#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/accessibility/observed_tree.h"
#include "platform/linux/accessibility/window_origins.h"
#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Elements of the programs on the accessibility bus (AT-SPI).
class LinuxAccessibility : public Accessibility {
  public:
    /// Both outlive this service.
    LinuxAccessibility(AccessibilityBus& bus, X11Display& display) : bus_(bus), display_(display) {}

    ElementRef createApplication(std::int32_t pid) override;
    std::int32_t copyAttributeValue(const ElementRef& element, std::string_view attribute,
                                    std::optional<Value>& value) override;
    std::int32_t copyActionNames(const ElementRef& element, std::optional<Value>& names) override;
    std::int32_t performAction(const ElementRef& element, std::string_view action) override;
    std::int32_t setAttributeValue(const ElementRef& element, std::string_view attribute,
                                   const Value& value) override;
    std::unique_ptr<Observation> beginObservation(const ObservationPlan& plan) override;
    std::unique_ptr<ChangeWatch> watchChanges(std::int32_t pid) override;

  private:
    class CurrentObservation;

    /// What is known of the element from the observation that is in progress; null when nothing is.
    ObservedElement* observed(const ElementRef& element);
    /// Reads facts, from the observation as far as it has them. Returns 0 or an error code.
    std::int32_t read(const ElementRef& element, const Needs& needs, bool wantsScrollBar,
                      const std::function<std::int32_t(const Facts&)>& use);
    std::int32_t readAnew(const Reference& element, const Needs& needs, bool wantsScrollBar,
                          Facts& facts);
    /// The element's reference; nothing when it belongs to a connection that has gone, or to a
    /// process that is not on the bus.
    std::optional<Reference> resolve(const ElementRef& element);
    std::int32_t copyFocusedWindow(const ElementRef& element, std::optional<Value>& value);
    /// Of a program that does not join the bus.
    std::int32_t copyPlainWindow(std::int32_t pid, std::optional<Value>& value);
    ElementRef makeElement(const Reference& reference, std::optional<std::string> title = {});

    AccessibilityBus& bus_;
    X11Display& display_;
    ApplicationLookup lookup_{bus_, display_};
    WindowOrigins origins_{bus_, display_};
    std::unique_ptr<ObservedTree> tree_;
    /// The observation's root, which may be an application.
    ElementRef observedRoot_;
    /// The connection that the observation was made with.
    std::uint64_t observedGeneration_ = 0;
};

}  // namespace quil::linux_platform
