#pragma once

namespace quil {

/// A place in global screen coordinates: points (not pixels), origin at the top-left corner of the
/// main display, x growing to the right and y downward. Displays left of or above the main one have
/// negative coordinates.
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
    bool operator==(const Rect&) const = default;
};

}  // namespace quil
