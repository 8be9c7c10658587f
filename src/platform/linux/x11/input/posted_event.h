#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/event_posting.h"

namespace quil::linux_platform {

class KeyboardSource;

/// An event as it was made, with the meaning that event_posting.h gives its members.
struct PostedEvent : PostableEvent {
    std::uint32_t type = 0;
    Point location;
    std::uint32_t button = 0;
    std::int32_t wheel1 = 0;
    std::int32_t wheel2 = 0;
    std::uint16_t keyCode = 0;
    std::uint64_t flags = 0;
    std::optional<std::u16string> text;
    /// Outlives the event; null when it was made without one.
    KeyboardSource* source = nullptr;
};

}  // namespace quil::linux_platform
