#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/atspi/facts.h"
#include "platform/value.h"

namespace quil::linux_platform {

/// The handle of an element, or of the application that a process is.
class AtspiElement : public AccessibilityElement {
  public:
    explicit AtspiElement(std::int32_t pid) : pid_(pid) {}
    AtspiElement(Reference reference, std::uint64_t generation,
                 std::optional<std::string> title = {})
        : reference_(std::move(reference)), generation_(generation), title_(std::move(title)) {}

    /// The process of an application's element, whose reference has to be looked up; else 0.
    std::int32_t pid() const { return pid_; }
    const Reference& reference() const { return reference_; }
    /// The connection to the bus on which the reference means something.
    std::uint64_t generation() const { return generation_; }
    /// Of a window, the title that the user sees, where the program calls it something else.
    const std::optional<std::string>& title() const { return title_; }

  private:
    std::int32_t pid_ = 0;
    Reference reference_;
    std::uint64_t generation_ = 0;
    std::optional<std::string> title_;
};

}  // namespace quil::linux_platform
