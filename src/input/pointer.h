#pragma once

#include <cstdint>

#include "platform/event_posting.h"
#include "platform/geometry.h"
#include "platform/platform.h"

/// Synthetic pointer input, at places in global screen coordinates. Nothing is reported: an event
/// that cannot be made is left out and the others are posted. Only the left button is used.
namespace quil {

/// Posts one mouse event of that type (`kEventMouseMoved`, …).
void postMouse(Platform& platform, std::uint32_t type, Point point,
               std::uint32_t button = kMouseButtonLeft);

/// Presses and releases the button `count` times in a row, without a pause.
void click(Platform& platform, Point at, int count);

/// Moves the pointer there and turns the wheel once by `amount` lines: up or to the left when
/// positive, down or to the right when negative. An amount of 0 still makes both events.
void scroll(Platform& platform, Point at, std::int32_t amount, bool horizontal);

/// Presses the button at `from`, moves in twelve steps of 8 ms along a straight line and releases
/// it at `to`. Blocks for about 96 ms.
void drag(Platform& platform, Point from, Point to);

}  // namespace quil
