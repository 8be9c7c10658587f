#include "input/pointer.h"

namespace quil {
namespace {

constexpr int kDragSteps = 12;
constexpr std::uint32_t kDragStepMicroseconds = 8'000;

}  // namespace

void postMouse(Platform& platform, std::uint32_t type, Point point, std::uint32_t button) {
    EventPosting& events = platform.eventPosting();
    const auto event = events.createMouseEvent(nullptr, type, point, button);
    if (event) events.post(kHidEventTap, *event);
}

void click(Platform& platform, Point at, int count) {
    for (int i = 0; i < count; ++i) {
        postMouse(platform, kEventLeftMouseDown, at);
        postMouse(platform, kEventLeftMouseUp, at);
    }
}

void scroll(Platform& platform, Point at, std::int32_t amount, bool horizontal) {
    postMouse(platform, kEventMouseMoved, at);
    EventPosting& events = platform.eventPosting();
    const auto event = events.createScrollWheelEvent(
        nullptr, kScrollEventUnitLine, 2, horizontal ? 0 : amount, horizontal ? amount : 0, 0);
    if (!event) return;
    events.setLocation(*event, at);
    events.post(kHidEventTap, *event);
}

void drag(Platform& platform, Point from, Point to) {
    postMouse(platform, kEventLeftMouseDown, from);
    for (int step = 1; step <= kDragSteps; ++step) {
        const double t = static_cast<double>(step) / kDragSteps;
        postMouse(platform, kEventLeftMouseDragged,
                  {from.x + (to.x - from.x) * t, from.y + (to.y - from.y) * t});
        platform.clock().sleepMicroseconds(kDragStepMicroseconds);
    }
    postMouse(platform, kEventLeftMouseUp, to);
}

}  // namespace quil
