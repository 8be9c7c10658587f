#pragma once

namespace quil {

/// A point in global screen coordinates: points (not pixels), x growing to the right and y
/// downward. The origin is the top-left corner of the main display, so that displays left of or
/// above it have negative coordinates; on an X server it is that of the whole screen, and a point
/// is a pixel.
struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

/// An extent in points.
struct Size {
    double width = 0;
    double height = 0;
    bool operator==(const Size&) const = default;
};

/// A rectangle in global screen coordinates.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double minX() const { return x; }
    double minY() const { return y; }
    double maxX() const { return x + width; }
    double maxY() const { return y + height; }
    /// False also where an extent is no number.
    bool hasArea() const { return width > 0 && height > 0; }
    /// Whether the point lies in it, on its left or its top edge.
    bool contains(Point point) const {
        return minX() <= point.x && point.x < maxX() && minY() <= point.y && point.y < maxY();
    }
    bool operator==(const Rect&) const = default;
};

}  // namespace quil
