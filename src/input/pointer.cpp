#include "input/pointer.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/virtual_keys.h"

namespace quil {
namespace {

constexpr int kDragSteps = 12;
constexpr std::uint32_t kDragStepMicroseconds = 8'000;
/// Programs look at what is dragged over them when the pointer moves there, and take some time.
constexpr std::uint32_t kDropPauseMicroseconds = 100'000;

/// Modifiers, in the order in which they are pressed. They are released in the reverse order.
constexpr std::pair<std::uint64_t, std::uint16_t> kModifierKeys[] = {
    {kEventFlagMaskControl, virtual_key::control},
    {kEventFlagMaskAlternate, virtual_key::option},
    {kEventFlagMaskShift, virtual_key::shift},
    {kEventFlagMaskCommand, virtual_key::command},
};

/// Holds modifier keys down while it lives.
class HeldModifiers {
  public:
    HeldModifiers(EventPosting& events, std::uint64_t flags) : events_(events) {
        for (const auto& [flag, key] : kModifierKeys) {
            if ((flags & flag) == 0) continue;
            held_ |= flag;
            post(key, true);
        }
    }
    HeldModifiers(const HeldModifiers&) = delete;
    HeldModifiers& operator=(const HeldModifiers&) = delete;
    ~HeldModifiers() {
        for (auto modifier = std::rbegin(kModifierKeys); modifier != std::rend(kModifierKeys);
             ++modifier) {
            if ((held_ & modifier->first) == 0) continue;
            held_ &= ~modifier->first;
            post(modifier->second, false);
        }
    }

  private:
    void post(std::uint16_t keyCode, bool isDown) {
        const auto source = events_.createSource(kEventSourceStateHidSystemState);
        const auto event = events_.createKeyboardEvent(source.get(), keyCode, isDown);
        if (!event) return;
        events_.setFlags(*event, held_);
        events_.post(kHidEventTap, *event);
    }

    EventPosting& events_;
    std::uint64_t held_ = 0;
};

void postButton(EventPosting& events, std::uint32_t type, Point point, const MouseButton& button,
                std::uint64_t modifiers, int click) {
    const auto event = events.createMouseEvent(nullptr, type, point, button.number);
    if (!event) return;
    if (modifiers != 0) events.setFlags(*event, modifiers);
    events.setIntegerValueField(*event, kMouseEventClickState, click);
    events.post(kHidEventTap, *event);
}

}  // namespace

void postMouse(EventPosting& events, std::uint32_t type, Point point, std::uint32_t button) {
    const auto event = events.createMouseEvent(nullptr, type, point, button);
    if (event) events.post(kHidEventTap, *event);
}

void click(EventPosting& events, Point at, int count) {
    for (int i = 0; i < count; ++i) {
        postMouse(events, kEventLeftMouseDown, at);
        postMouse(events, kEventLeftMouseUp, at);
    }
}

std::optional<MouseButton> mouseButton(std::string_view name) {
    if (name == "left") return MouseButton();
    if (name == "right") {
        return MouseButton{kMouseButtonRight, kEventRightMouseDown, kEventRightMouseUp,
                           kEventRightMouseDragged};
    }
    if (name == "middle") {
        return MouseButton{kMouseButtonCenter, kEventOtherMouseDown, kEventOtherMouseUp,
                           kEventOtherMouseDragged};
    }
    return {};
}

void clickButton(EventPosting& events, Point at, const MouseButton& button, int count,
                 std::uint64_t modifiers) {
    events.beginClicks(at, button.number, count);
    const HeldModifiers held(events, modifiers);
    for (int click = 1; click <= count; ++click) {
        postButton(events, button.downType, at, button, modifiers, click);
        postButton(events, button.upType, at, button, modifiers, click);
    }
}

void dragAlong(EventPosting& events, Clock& clock, const std::vector<Point>& path,
               const MouseButton& button, std::uint64_t modifiers, std::uint32_t milliseconds) {
    events.beginClicks(path.front(), button.number, 1);
    const HeldModifiers held(events, modifiers);
    postButton(events, button.downType, path.front(), button, modifiers, 1);
    const std::size_t lines = path.size() - 1;
    const std::uint64_t total = std::uint64_t{milliseconds} * 1000;
    // At least as many steps as there are lines, so that every point is visited.
    const std::size_t perLine =
        std::max<std::size_t>(1, static_cast<std::size_t>(total / kDragStepMicroseconds) / lines);
    const std::size_t steps = perLine * lines;
    std::uint64_t slept = 0;
    for (std::size_t step = 1; step <= steps; ++step) {
        const std::size_t line = (step - 1) / perLine;
        const Point& from = path[line];
        const Point& to = path[line + 1];
        const double t = static_cast<double>(step - line * perLine) / static_cast<double>(perLine);
        postButton(events, button.draggedType,
                   {from.x + (to.x - from.x) * t, from.y + (to.y - from.y) * t}, button, modifiers,
                   1);
        const std::uint64_t due = total * step / steps;
        if (due > slept) {
            clock.sleepMicroseconds(static_cast<std::uint32_t>(due - slept));
        }
        slept = due;
    }
    clock.sleepMicroseconds(kDropPauseMicroseconds);
    postButton(events, button.upType, path.back(), button, modifiers, 1);
}

void scroll(EventPosting& events, Point at, std::int32_t amount, bool horizontal) {
    postMouse(events, kEventMouseMoved, at);
    const auto event = events.createScrollWheelEvent(
        nullptr, kScrollEventUnitLine, 2, horizontal ? 0 : amount, horizontal ? amount : 0, 0);
    if (!event) return;
    events.setLocation(*event, at);
    events.post(kHidEventTap, *event);
}

void drag(EventPosting& events, Clock& clock, Point from, Point to) {
    postMouse(events, kEventLeftMouseDown, from);
    for (int step = 1; step <= kDragSteps; ++step) {
        const double t = static_cast<double>(step) / kDragSteps;
        postMouse(events, kEventLeftMouseDragged,
                  {from.x + (to.x - from.x) * t, from.y + (to.y - from.y) * t});
        clock.sleepMicroseconds(kDragStepMicroseconds);
    }
    postMouse(events, kEventLeftMouseUp, to);
}

}  // namespace quil
