#include "runtime/gates.h"
#include "runtime/handlers.h"
#include "screen/cached_displays.h"

namespace quil {
namespace {

constexpr std::int64_t kDefaultTimeoutMs = 1000;

void respondPermissionRequired(Runtime& runtime, std::int64_t id, const char* message) {
    runtime.responses.respondErrorCode(id, "RECORDING_PERMISSION_REQUIRED", message);
}

}  // namespace

void handleStartInputRecording(Runtime& runtime, std::int64_t id, const Parameters&) {
    constexpr const char* kListenAccessRequired = "input monitoring permission required";
    if (!listenAccessGranted(runtime.platform.permissions())) {
        // The user decides, which may take long; the host asks again.
        requestListenAccess(runtime.platform.permissions());
        return respondPermissionRequired(runtime, id, kListenAccessRequired);
    }
    switch (runtime.sharedInputRecorder->start()) {
        case InputRecorderStart::started:
            return runtime.responses.respond(id, Json::object());
        case InputRecorderStart::permissionDenied:
            return respondPermissionRequired(runtime, id, kListenAccessRequired);
        case InputRecorderStart::tapUnavailable:
            if (!accessibilityGranted(runtime)) {
                return respondPermissionRequired(runtime, id, "accessibility permission required");
            }
            return runtime.responses.respondErrorCode(id, "RECORDING_CAPTURE_UNAVAILABLE",
                                                      "input event tap unavailable");
    }
}

void handleNextInputEvent(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    const auto timeoutMs = parameters.integer("timeoutMs").value_or(kDefaultTimeoutMs);
    const auto record = runtime.sharedInputRecorder->next(timeoutMs);
    Json result;
    Platform& platform = runtime.platform;
    result["event"] =
        record ? inputEventPayload(platform.clock(), platform.displays(), *record) : Json();
    runtime.responses.respond(id, std::move(result));
}

void handleStopInputRecording(Runtime& runtime, std::int64_t id, const Parameters&) {
    Json events = Json::array();
    CachedDisplays displays(runtime.platform.displays());
    for (const RecordedInput& record : runtime.sharedInputRecorder->stopAndDrain()) {
        events.push_back(inputEventPayload(runtime.platform.clock(), displays, record));
    }
    Json result;
    result["events"] = std::move(events);
    runtime.responses.respond(id, std::move(result));
}

}  // namespace quil
