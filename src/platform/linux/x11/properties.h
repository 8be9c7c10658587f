#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// A request for a window's property that has been sent; `read` waits for its reply. Sending many
/// before reading the first costs one round trip for all. A request that is never read costs
/// nothing but its reply.
class PropertyRequest {
  public:
    PropertyRequest(X11Connection& connection, xcb_window_t window, std::string_view name);

    /// Waits for the reply. A property that is missing has neither numbers nor text.
    void read(X11Connection& connection);

    bool exists() const { return exists_; }
    /// The numbers of a property with 32-bit items.
    const std::vector<std::uint32_t>& numbers() const { return numbers_; }
    std::optional<std::uint32_t> number() const {
        return numbers_.empty() ? std::nullopt : std::optional(numbers_.front());
    }
    bool contains(std::uint32_t number) const;

    /// The strings of a property with 8-bit items, which NUL bytes separate, as valid UTF-8 (from
    /// Latin-1 when the property's type is STRING, from COMPOUND_TEXT, or from UTF-8).
    const std::vector<std::string>& texts() const { return texts_; }
    /// The first string; absent when the property is missing or holds no text.
    std::optional<std::string> text() const {
        return texts_.empty() ? std::nullopt : std::optional(texts_.front());
    }

  private:
    xcb_get_property_cookie_t cookie_;
    bool exists_ = false;
    std::vector<std::uint32_t> numbers_;
    std::vector<std::string> texts_;
};

/// A property that is wanted at once.
PropertyRequest readProperty(X11Connection& connection, xcb_window_t window, std::string_view name);

/// Notes numbers on the root window, for other runtimes.
void writeRootNumbers(X11Connection& connection, std::string_view name,
                      const std::vector<std::uint32_t>& numbers);

}  // namespace quil::linux_platform
