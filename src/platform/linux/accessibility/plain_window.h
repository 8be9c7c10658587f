#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/linux/x11/windows/windows.h"
#include "platform/value.h"

namespace quil::linux_platform {

/// The active window of a program that is not on the accessibility bus, as the X server knows it:
/// it has a title, a position and a size, and nothing is known of what is in it.
class PlainWindow : public AccessibilityElement {
  public:
    explicit PlainWindow(X11Window window) : window_(std::move(window)) {}

    /// Returns 0 or an error code.
    std::int32_t copyAttributeValue(std::string_view attribute, std::optional<Value>& value) const;

  private:
    X11Window window_;
};

}  // namespace quil::linux_platform
