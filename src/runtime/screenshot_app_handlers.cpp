#include "apps/installed_apps.h"
#include "apps/launch_app.h"
#include "runtime/gates.h"
#include "runtime/handlers.h"
#include "screen/screenshot.h"
#include "target/capture_target.h"

namespace quil {

void handleScreenshot(Runtime& runtime, std::int64_t id, const Parameters&) {
    if (!requireScreenRecording(runtime, id)) return;
    auto screenshot = screenshotDataURL(runtime.platform);
    Json result = {{"target", targetDictionary(frontmostTarget(runtime.platform))}};
    result["screenshotDataURL"] = std::move(screenshot).value_or("");
    runtime.responses.respond(id, std::move(result));
}

void handleAppsList(Runtime& runtime, std::int64_t id, const Parameters&) {
    runtime.responses.respond(id, {{"apps", installedApps(runtime.platform)}});
}

void handleLaunchApp(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    const auto appId = parameters.string("appId");
    if (!appId) return runtime.responses.respondError(id, "appId is required");
    launchApp(runtime.platform.workspace(), runtime.platform.bundles(), *appId);
    runtime.responses.respond(
        id, {{"ok", true}, {"target", targetDictionary(frontmostTarget(runtime.platform))}});
}

}  // namespace quil
