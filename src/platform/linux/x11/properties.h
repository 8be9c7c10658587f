#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// A request for a window's property that has been sent; `read` waits for its answer. Sending many
/// before reading the first costs one round trip for all.
class PropertyRequest {
  public:
    PropertyRequest(X11Connection& connection, xcb_window_t window, std::string_view name);

    /// Waits for the answer. A property that is missing has neither numbers nor text.
    void read(X11Connection& connection);

    /// The numbers of a property with 32-bit items.
    const std::vector<std::uint32_t>& numbers() const { return numbers_; }
    std::optional<std::uint32_t> number() const {
        return numbers_.empty() ? std::nullopt : std::optional(numbers_.front());
    }
    /// The text of a property with 8-bit items, as valid UTF-8: Latin-1 when its type is STRING,
    /// UTF-8 otherwise. NUL bytes stay.
    const std::optional<std::string>& text() const { return text_; }

  private:
    xcb_get_property_cookie_t cookie_;
    std::vector<std::uint32_t> numbers_;
    std::optional<std::string> text_;
};

/// A property that is wanted at once.
std::vector<std::uint32_t> readNumbers(X11Connection& connection, xcb_window_t window,
                                       std::string_view name);

}  // namespace quil::linux_platform
