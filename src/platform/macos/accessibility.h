#pragma once

#include "platform/accessibility.h"
#include "platform/macos/ax_calls.h"

namespace quil::macos {

/// The accessibility client interface. Waits for an application end after the system's own
/// messaging time-out. Attributes can be set to strings, booleans and numbers.
class MacAccessibility : public Accessibility {
  public:
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
    AxCalls calls_;
    AxObservation* observation_ = nullptr;  // the one in progress, if any
};

}  // namespace quil::macos
