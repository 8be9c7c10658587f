#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/clock.h"
#include "platform/event_posting.h"
#include "platform/geometry.h"

/// Synthetic pointer input, at points in global screen coordinates. Nothing is reported: an event
/// that cannot be made is left out and the others are posted.
namespace quil {

/// Posts one mouse event of that type (`kEventMouseMoved`, …).
void postMouse(EventPosting& events, std::uint32_t type, Point point,
               std::uint32_t button = kMouseButtonLeft);

/// Presses and releases the button `count` times in a row, without a pause.
void click(EventPosting& events, Point at, int count);

/// Moves the pointer there and turns the wheel once by `amount` lines: up or to the left when
/// positive, down or to the right when negative. An amount of 0 still makes both events.
void scroll(EventPosting& events, Point at, std::int32_t amount, bool horizontal);

/// A button of the mouse, with the types of its events.
struct MouseButton {
    std::uint32_t number = kMouseButtonLeft;
    std::uint32_t downType = kEventLeftMouseDown;
    std::uint32_t upType = kEventLeftMouseUp;
    std::uint32_t draggedType = kEventLeftMouseDragged;
};

/// The button "left", "right" or "middle"; nothing for another name.
std::optional<MouseButton> mouseButton(std::string_view name);

/// Presses and releases the button `count` times in a row, without a pause, with these modifiers
/// (`kEventFlagMask…`) held around all of it. Each event says which click of the row it belongs to.
void clickButton(EventPosting& events, Point at, const MouseButton& button, int count,
                 std::uint64_t modifiers);

/// Drags with the button along the points (two at least), with these modifiers held: a press at the
/// first, moves in equal steps of time, a release at the last, where the pointer has then rested
/// long enough to be noticed. Blocks for that duration and about 0.1 s more.
void dragAlong(EventPosting& events, Clock& clock, const std::vector<Point>& path,
               const MouseButton& button, std::uint64_t modifiers, std::uint32_t milliseconds);

/// Presses the button at `from`, moves in twelve steps of 8 ms along a straight line and releases
/// it at `to`. Blocks for about 96 ms.
void drag(EventPosting& events, Clock& clock, Point from, Point to);

}  // namespace quil
