#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"

namespace quil {

/// One entry of the platform's list of screens, which knows the displays' names.
struct Screen {
    /// The display's id ("NSScreenNumber"); absent when the entry has none or it is not a number.
    std::optional<std::uint32_t> screenNumber;
    /// The name that the platform shows for the display.
    std::string localizedName;
};

/// The displays, as they are at the moment of the call.
class Displays {
  public:
    virtual ~Displays() = default;

    /// Writes the ids of up to `capacity` active displays to `ids`, the main display first, and
    /// their number to `*count`. With capacity 0 (`ids` may then be null) `*count` is the number of
    /// active displays. Returns 0, or the platform's error code; `*count` is then meaningless.
    virtual std::int32_t getActiveDisplayList(std::uint32_t capacity, std::uint32_t* ids,
                                              std::uint32_t* count) = 0;
    /// The display's rectangle in global screen coordinates; empty for an unknown id.
    virtual Rect displayBounds(std::uint32_t display) = 0;
    /// The main display's id.
    virtual std::uint32_t mainDisplayId() = 0;
    /// The platform's list of screens; displays without a name may be missing.
    virtual std::vector<Screen> screens() = 0;
};

}  // namespace quil
