#include <algorithm>
#include <limits>
#include <optional>

#include "accessibility/ax_elements.h"
#include "input/keyboard.h"
#include "input/pointer.h"
#include "runtime/gates.h"
#include "runtime/handlers.h"
#include "runtime/request_points.h"
#include "screen/display_geometry.h"
#include "target/capture_target.h"

namespace quil {
namespace {

void respondOk(Runtime& runtime, std::int64_t id) {
    runtime.responses.respond(id, {{"ok", true}});
}

void respondOkWithTarget(Runtime& runtime, std::int64_t id) {
    runtime.responses.respond(
        id, {{"ok", true}, {"target", targetDictionary(frontmostTarget(runtime.platform))}});
}

void clickTimes(Runtime& runtime, std::int64_t id, const Parameters& parameters, int count) {
    if (!requireAccessibility(runtime, id)) return;
    const auto point = elementOrPoint(runtime, parameters);
    if (!point) return runtime.responses.respondError(id, "point is required");
    click(runtime.platform.eventPosting(), *point, count);
    respondOkWithTarget(runtime, id);
}

using EnterText = void (*)(Platform& platform, std::string_view text);

void enterText(Runtime& runtime, std::int64_t id, const Parameters& parameters, EnterText enter) {
    if (!requireAccessibility(runtime, id)) return;
    const auto text = parameters.string("text");
    if (!text) return runtime.responses.respondError(id, "text is required");
    if (const auto element = parameters.string("element")) {
        performAxAction(runtime.platform, runtime.lastAxSnapshot, *element, "focus", {}, {});
    } else if (const auto point = pointMember(runtime, parameters, "point")) {
        click(runtime.platform.eventPosting(), *point, 1);
    }
    enter(runtime.platform, *text);
    respondOkWithTarget(runtime, id);
}

/// The wheel's turn is a signed 32-bit number: what is beyond becomes the largest turn.
std::int32_t wheelAmount(std::int64_t amount) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(amount, Limits::min(), Limits::max()));
}

}  // namespace

void handleClick(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    clickTimes(runtime, id, parameters, 1);
}

void handleDoubleClick(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    clickTimes(runtime, id, parameters, 2);
}

void handleMove(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    if (!requireAccessibility(runtime, id)) return;
    const auto point = pointMember(runtime, parameters, "point");
    if (!point) return runtime.responses.respondError(id, "point is required");
    postMouse(runtime.platform.eventPosting(), kEventMouseMoved, *point);
    respondOk(runtime, id);
}

void handleScroll(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    if (!requireAccessibility(runtime, id)) return;
    const auto amount = parameters.integer("amount");
    if (!amount) return runtime.responses.respondError(id, "amount is required");
    const auto point = elementOrPoint(runtime, parameters);
    if (!point) return runtime.responses.respondError(id, "point or element is required");
    const bool horizontal = parameters.string("axis") == "horizontal";
    scroll(runtime.platform.eventPosting(), *point, wheelAmount(*amount), horizontal);
    respondOk(runtime, id);
}

void handleType(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    enterText(runtime, id, parameters, [](Platform& platform, std::string_view text) {
        typeText(platform.eventPosting(), text);
    });
}

void handlePaste(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    enterText(runtime, id, parameters, [](Platform& platform, std::string_view text) {
        pasteText(platform.eventPosting(), platform.pasteboard(), platform.clock(), text);
    });
}

void handleKeypress(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    if (!requireAccessibility(runtime, id)) return;
    const auto combo = parameters.string("combo");
    if (!combo) return runtime.responses.respondError(id, "combo is required");
    keypress(runtime.platform.eventPosting(), *combo);
    respondOk(runtime, id);
}

void handleDrag(Runtime& runtime, std::int64_t id, const Parameters& parameters) {
    if (!requireAccessibility(runtime, id)) return;
    const auto from = pointMember(runtime, parameters, "from");
    const auto to = from ? pointMember(runtime, parameters, "to") : std::nullopt;
    if (!to) return runtime.responses.respondError(id, "from and to are required");
    drag(runtime.platform.eventPosting(), runtime.platform.clock(), *from, *to);
    respondOk(runtime, id);
}

}  // namespace quil
