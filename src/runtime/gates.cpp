#include "runtime/gates.h"

namespace quil {
namespace {

constexpr const char* kPermissionRequired = "COMPUTER_CONTROL_PERMISSION_REQUIRED";

}  // namespace

bool accessibilityGranted(Runtime& runtime) {
    return runtime.platform.permissions().isProcessTrusted();
}

bool screenRecordingGranted(Runtime& runtime) {
    return runtime.platform.permissions().preflightScreenCaptureAccess();
}

bool requireAccessibility(Runtime& runtime, std::int64_t id) {
    if (accessibilityGranted(runtime)) return true;
    runtime.responses.respondErrorCode(id, kPermissionRequired,
                                       "accessibility permission required");
    return false;
}

bool requireScreenRecording(Runtime& runtime, std::int64_t id) {
    if (screenRecordingGranted(runtime)) return true;
    runtime.responses.respondErrorCode(id, kPermissionRequired,
                                       "screen recording permission required");
    return false;
}

}  // namespace quil
