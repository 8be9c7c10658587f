#include "runtime/gates.h"
#include "runtime/handlers.h"
#include "screen/windows.h"
#include "target/capture_target.h"

namespace quil {

void handlePing(Runtime& runtime, std::int64_t id, const Parameters&) {
    const bool accessibility = accessibilityGranted(runtime);
    const bool permissionsGranted = accessibility && screenRecordingGranted(runtime);
    runtime.responses.respond(
        id, {{"permissionsGranted", permissionsGranted},
             {"accessibility", accessibility},
             {"screenRecording", screenRecordingGranted(runtime)},
             {"inputMonitoring", runtime.platform.permissions().preflightListenEventAccess()},
             {"semantic", true}});
}

void handleTarget(Runtime& runtime, std::int64_t id, const Parameters&) {
    runtime.responses.respond(id,
                              {{"target", targetDictionary(frontmostTarget(runtime.platform))}});
}

void handleWindowsList(Runtime& runtime, std::int64_t id, const Parameters&) {
    runtime.responses.respond(
        id,
        {{"windows", windowsList(runtime.platform.windowList(), runtime.platform.workspace())}});
}

}  // namespace quil
