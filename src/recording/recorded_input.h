#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "json/json.h"
#include "platform/clock.h"
#include "platform/displays.h"
#include "platform/event_taps.h"
#include "platform/geometry.h"

namespace quil {

/// One thing that the user did, in the words of the methods that do it again.
struct RecordedInput {
    /// "click", "scroll", "type" or "keypress".
    std::string action;
    /// {} for "click", {"amount"} for "scroll", {"text"} for "type", {"combo"} for "keypress".
    Json params;
    /// Where the pointer was, in global screen coordinates; absent for what the keyboard did.
    std::optional<Point> point = {};
    /// When it happened, in milliseconds since 1970-01-01 00:00 UTC.
    std::int64_t at = 0;

    bool operator==(const RecordedInput&) const = default;
};

/// When the event happened, in milliseconds since 1970-01-01 00:00 UTC: its age taken from the wall
/// clock as it is now, so that records follow a clock that is set.
std::int64_t eventEpochMillis(Clock& clock, const TappedEvent& event);

/// {"id", "at", "kind", "action", "params"} and, for the pointer, "target" with its position as
/// fractions of the virtual screen and, where there is one, the display. Every payload has a new
/// id, also when the record is the same.
Json inputEventPayload(Clock& clock, Displays& displays, const RecordedInput& record);

}  // namespace quil
