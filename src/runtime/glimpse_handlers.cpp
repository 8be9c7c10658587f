#include "accessibility/ax_text.h"
#include "runtime/handlers.h"
#include "screen/screenshot.h"
#include "target/capture_target.h"

namespace quil {
namespace {

/// The text of whichever application is frontmost now, not when the capture started.
Json textUpdate(Platform& platform) {
    const auto application = platform.workspace().frontmostApplication();
    const std::int32_t pid = application ? application->processIdentifier : 0;
    return {{"type", "axText"},
            {"text", pid != 0 ? axText(platform.accessibility(), pid) : std::string()}};
}

Json screenshotUpdate(Platform& platform, const GlimpseSession& session) {
    Json update = {{"type", "screenshot"}, {"target", targetDictionary(session.target)}};
    update["screenshotDataURL"] = screenshotDataURL(platform).value_or("");
    return update;
}

Json nextUpdate(Platform& platform, const GlimpseSession& session) {
    switch (session.step) {
        case 0:
            return textUpdate(platform);
        case 1:
            return screenshotUpdate(platform, session);
        default:
            return {{"type", "completed"}};
    }
}

}  // namespace

void handleStartGlimpseCapture(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    const auto requestId = parameters.string("requestId");
    if (!requestId) return runtime.responses.respondError(id, "requestId is required");
    const CaptureTarget target = frontmostTarget(runtime.platform);
    runtime.glimpseSessions.start(*requestId, target);
    runtime.responses.respond(id, {{"target", targetDictionary(target)}});
}

void handleNextGlimpseUpdate(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    const auto requestId = parameters.string("requestId");
    if (!requestId) return runtime.responses.respondError(id, "requestId is required");
    const GlimpseSession* session = runtime.glimpseSessions.find(*requestId);
    Json result;
    result["update"] = session ? nextUpdate(runtime.platform, *session)
                               : Json{{"type", "failed"}, {"error", "unknown request"}};
    runtime.responses.respond(id, std::move(result));
    runtime.glimpseSessions.advance(*requestId);
}

void handleCancelGlimpseCapture(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    if (const auto requestId = parameters.string("requestId")) {
        runtime.glimpseSessions.cancel(*requestId);
    }
    runtime.responses.respond(id, Json::object());
}

}  // namespace quil
