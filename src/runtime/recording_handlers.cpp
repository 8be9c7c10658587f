#include "runtime/recording_handlers.h"

#include "runtime/gates.h"

namespace quil {
namespace {

constexpr std::int64_t kDefaultTimeoutMs = 1000;

Json payload(Runtime& runtime, const RecordedInput& record) {
    return inputEventPayload(runtime.platform.clock(), runtime.platform.displays(), record);
}

void respondPermissionRequired(Runtime& runtime, std::int64_t id, const char* message) {
    runtime.responses.respondErrorCode(id, "RECORDING_PERMISSION_REQUIRED", message);
}

}  // namespace

void handleStartInputRecording(Runtime& runtime, std::int64_t id, const Parameters&) {
    constexpr const char* kListenAccessRequired = "input monitoring permission required";
    if (!listenAccessGranted(runtime.platform.permissions())) {
        // The answer comes from a person and may take long; the host asks again.
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
    result["event"] = record ? payload(runtime, *record) : Json();
    runtime.responses.respond(id, std::move(result));
}

void handleStopInputRecording(Runtime& runtime, std::int64_t id, const Parameters&) {
    Json events = Json::array();
    for (const RecordedInput& record : runtime.sharedInputRecorder->stopAndDrain()) {
        events.push_back(payload(runtime, record));
    }
    Json result;
    result["events"] = std::move(events);
    runtime.responses.respond(id, std::move(result));
}

}  // namespace quil
