#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "accessibility/ax_error.h"
#include "accessibility/ax_wait.h"
#include "apps/activate_window.h"
#include "input/key_combination.h"
#include "input/pointer.h"
#include "runtime/gates.h"
#include "runtime/handlers.h"
#include "runtime/request_points.h"
#include "screen/cached_displays.h"
#include "screen/display_geometry.h"
#include "screen/screenshot.h"
#include "target/capture_target.h"

namespace quil {
namespace {

constexpr double kMaximumScale = 2;
constexpr std::size_t kMaximumPathPoints = 1000;
constexpr std::int64_t kDefaultDragMs = 100;
constexpr std::int64_t kDefaultWaitMs = 1000;
constexpr std::int64_t kMaximumMs = 60'000;

std::optional<MouseButton> readButton(const Parameters& parameters) {
    return mouseButton(parameters.string("button").value_or("left"));
}

std::optional<std::uint64_t> readModifiers(const Parameters& parameters) {
    return parseModifiers(parameters.string("modifiers").value_or(""));
}

/// The global points of "path"; empty when it is no list of so many points that resolve.
std::vector<Point> readPath(Runtime& runtime, const Parameters& parameters) {
    const Json* list = parameters.list("path");
    if (!list || list->size() < 2 || list->size() > kMaximumPathPoints) return {};
    std::vector<Point> path;
    CachedDisplays displays(runtime.platform.displays());
    for (const Json& entry : *list) {
        const auto point = entry.is_object() ? screenPoint(displays, entry) : std::nullopt;
        if (!point) return {};
        path.push_back(*point);
    }
    return path;
}

Json okWithTarget(Runtime& runtime) {
    return {{"ok", true}, {"target", targetDictionary(frontmostTarget(runtime.platform))}};
}

}  // namespace

void handleDisplaysList(Runtime& runtime, std::int64_t id, const Parameters&) {
    CachedDisplays displays(runtime.platform.displays());
    const auto active = activeDisplays(displays);
    Json list = Json::array();
    for (const DisplayGeometry& display : active) list.push_back(displayJson(display));
    runtime.responses.respond(id,
                              {{"displays", std::move(list)},
                               {"virtualScreen", rectJson(virtualScreenBounds(displays, active))}});
}

void handleCapture(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    if (!requireScreenRecording(runtime, id)) return;
    const double scale = parameters.number("scale").value_or(1);
    if (!(scale > 0 && scale <= kMaximumScale)) {
        return runtime.responses.respondError(id, "scale must be above 0 and at most 2");
    }
    const auto window = parameters.integer("window");
    auto capture =
        window ? captureWindow(runtime.platform.screenCapture(), *window, scale)
               : captureDisplay(runtime.platform.displays(), runtime.platform.screenCapture(),
                                parameters.integer("display"), scale);
    if (!capture) throw AxError::unsupported(window ? "window not found" : "display not found");
    Json result = {{"bounds", rectJson(capture->bounds)}};
    result["screenshotDataURL"] = std::move(capture->dataUrl);
    runtime.responses.respond(id, std::move(result));
}

void handleMouseClick(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    if (!requireAccessibility(runtime, id)) return;
    const auto point = elementOrPoint(runtime, parameters);
    if (!point) return runtime.responses.respondError(id, "point or element is required");
    const auto button = readButton(parameters);
    if (!button) return runtime.responses.respondError(id, "unknown button");
    const std::int64_t count = parameters.integer("count").value_or(1);
    if (count < 1 || count > 3) return runtime.responses.respondError(id, "count must be 1 to 3");
    const auto modifiers = readModifiers(parameters);
    if (!modifiers) return runtime.responses.respondError(id, "unknown modifier");
    clickButton(runtime.platform.eventPosting(), *point, *button, static_cast<int>(count),
                *modifiers);
    runtime.responses.respond(id, okWithTarget(runtime));
}

void handleMouseDrag(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    if (!requireAccessibility(runtime, id)) return;
    const auto path = readPath(runtime, parameters);
    if (path.empty()) {
        return runtime.responses.respondError(id, "path of 2 to 1000 points is required");
    }
    const auto button = readButton(parameters);
    if (!button) return runtime.responses.respondError(id, "unknown button");
    const auto modifiers = readModifiers(parameters);
    if (!modifiers) return runtime.responses.respondError(id, "unknown modifier");
    const std::int64_t duration = parameters.integer("durationMs").value_or(kDefaultDragMs);
    if (duration < 0 || duration > kMaximumMs) {
        return runtime.responses.respondError(id, "durationMs must be 0 to 60000");
    }
    dragAlong(runtime.platform.eventPosting(), runtime.platform.clock(), path, *button, *modifiers,
              static_cast<std::uint32_t>(duration));
    runtime.responses.respond(id, {{"ok", true}});
}

void handleClipboardRead(Runtime& runtime, std::int64_t id, const Parameters&) {
    Json result = {{"text", nullptr}};
    setOptional(result, "text", runtime.platform.pasteboard().stringForType(kPasteboardTypeString));
    runtime.responses.respond(id, std::move(result));
}

void handleClipboardWrite(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    const auto text = parameters.string("text");
    if (!text) return runtime.responses.respondError(id, "text is required");
    Pasteboard& pasteboard = runtime.platform.pasteboard();
    pasteboard.clearContents();
    if (!pasteboard.setString(*text, kPasteboardTypeString)) {
        throw AxError::failed("clipboard refused the text");
    }
    runtime.responses.respond(id, {{"ok", true}});
}

void handleAxWait(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    if (!requireAccessibility(runtime, id)) return;
    const auto revision = parameters.string("revision");
    if (!revision) return runtime.responses.respondError(id, "revision is required");
    const auto milliseconds = [&](const char* key, std::int64_t otherwise) {
        const std::int64_t wanted = parameters.integer(key).value_or(otherwise);
        return std::clamp<std::int64_t>(wanted, 0, kMaximumMs);
    };
    const AxWaitOutcome outcome =
        waitForAxChange(runtime.platform, *revision, milliseconds("timeoutMs", kDefaultWaitMs),
                        milliseconds("quietMs", 0));
    runtime.responses.respond(id, {{"changed", outcome.changed}, {"revision", outcome.revision}});
}

void handleWindowActivate(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    if (!requireAccessibility(runtime, id)) return;
    const auto window = parameters.integer("window");
    if (!window) return runtime.responses.respondError(id, "window is required");
    activateWindow(runtime.platform.windowList(), runtime.platform.clock(), *window);
    runtime.responses.respond(id, okWithTarget(runtime));
}

}  // namespace quil
