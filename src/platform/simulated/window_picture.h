#pragma once

#include <cstdint>
#include <vector>

#include "platform/png/picture.h"
#include "platform/simulated/application.h"

namespace quil::simulated {

/// What a capture of the window shows, at that size in pixels: its colour and, in the order of the
/// tree, the rectangle of every element with bounds, in the element's colour and framed in black.
/// The edges of a rectangle lie where its bounds scale to, rounded down to whole pixels.
Picture drawWindow(const Window& window, std::int64_t width, std::int64_t height);

/// What a capture of that part of the screen shows: the windows over one another, the first in
/// front, on black.
Picture drawScreen(const std::vector<Window*>& windows, Rect frame, std::int64_t width,
                   std::int64_t height);

/// The colour of an element, 0xRRGGBB; its role and title decide it.
std::uint32_t elementColour(const Element& element);

}  // namespace quil::simulated
