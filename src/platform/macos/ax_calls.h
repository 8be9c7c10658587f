#pragma once

#include "platform/macos/ax_observation.h"

namespace quil::macos {

/// The reading calls of the accessibility client interface, one round trip to the application each.
class AxCalls : public AxReads {
  public:
    AxResult copyAttributeValue(const ElementRef& element, std::string_view attribute) override;
    AxResult copyActionNames(const ElementRef& element) override;
    std::int32_t copyMultipleAttributeValues(const ElementRef& element,
                                             const std::vector<std::string>& attributes,
                                             std::vector<AxResult>& results) override;
    std::int32_t processOf(const ElementRef& element) override;
    double uptime() override;
};

}  // namespace quil::macos
