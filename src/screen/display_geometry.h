#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "json/json.h"
#include "platform/displays.h"
#include "platform/geometry.h"

/// Requests and records name points as fractions of the virtual screen, the smallest rectangle that
/// covers all active displays. Here they become global screen coordinates and back. Nothing is
/// kept: every operation asks for the displays as they are now.
namespace quil {

/// One active display.
struct DisplayGeometry {
    std::uint32_t id = 0;
    /// In global screen coordinates.
    Rect bounds;
    /// The platform's name for the display, else "Display " and its id.
    std::string name;

    bool operator==(const DisplayGeometry&) const = default;
};

/// The active displays, the main one first; empty when they cannot be listed.
std::vector<DisplayGeometry> activeDisplays(Displays& displays);

/// The union of the displays' bounds; of none, the main display's bounds.
Rect virtualScreenBounds(Displays& displays, const std::vector<DisplayGeometry>& active);

/// The first display that contains the point, left and top edges included, else the first of the
/// list; absent for an empty list.
std::optional<DisplayGeometry> displayContaining(Point point,
                                                 const std::vector<DisplayGeometry>& active);

/// The global point of a request's {"x", "y"}, both numbers from 0 to 1. Absent when a member is
/// missing, is no number or lies outside that range, and when the virtual screen has no area. The
/// point may lie between displays, and for 1 lies on the far edge: it is neither rounded nor moved.
std::optional<Point> screenPoint(Displays& displays, const Json& pointObject);

/// {"x", "y"}: the point as fractions of the virtual screen, limited to 0 to 1; zeros when the
/// virtual screen has no area.
Json normalizedPoint(Displays& displays, Point point);

/// {"x", "y", "width", "height"}
Json rectJson(const Rect& rect);

/// {"id", "name", "bounds"}
Json displayJson(const DisplayGeometry& display);

/// {"id", "name", "bounds"} of the display that contains the point, or of the first display when
/// none does; absent when there is no display.
std::optional<Json> displayInfo(Displays& displays, Point point);

}  // namespace quil
