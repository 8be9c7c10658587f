#include "recording/recorded_input.h"

#include "screen/display_geometry.h"

namespace quil {

std::int64_t eventEpochMillis(Clock& clock, const TappedEvent& event) {
    const double wallMs = clock.timeIntervalSince1970() * 1000;
    const double upMs = clock.systemUptime() * 1000;
    const double eventMs = static_cast<double>(event.timestamp()) / 1'000'000;
    return static_cast<std::int64_t>(wallMs - (upMs - eventMs));
}

Json inputEventPayload(Clock& clock, Displays& displays, const RecordedInput& record) {
    Json payload = {{"id", "input-" + clock.uuidString()},
                    {"at", record.at},
                    {"kind", "action"},
                    {"action", record.action},
                    {"params", record.params}};
    if (record.point) {
        Json target = {{"point", normalizedPoint(displays, *record.point)}};
        setOptional(target, "display", displayInfo(displays, *record.point));
        payload["target"] = std::move(target);
    }
    return payload;
}

}  // namespace quil
