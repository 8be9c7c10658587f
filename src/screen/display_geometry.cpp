#include "screen/display_geometry.h"

#include <algorithm>

namespace quil {
namespace {

Rect unite(const Rect& a, const Rect& b) {
    const double minX = std::min(a.minX(), b.minX());
    const double minY = std::min(a.minY(), b.minY());
    return {minX, minY, std::max(a.maxX(), b.maxX()) - minX, std::max(a.maxY(), b.maxY()) - minY};
}

std::vector<std::uint32_t> activeDisplayIds(Displays& displays) {
    std::uint32_t count = 0;
    if (displays.getActiveDisplayList(0, nullptr, &count) != 0 || count == 0) return {};
    std::vector<std::uint32_t> ids(count, 0);
    // A display may come or go between the two calls.
    if (displays.getActiveDisplayList(count, ids.data(), &count) != 0) return {};
    ids.resize(std::min<std::size_t>(ids.size(), count));
    return ids;
}

std::string displayName(const std::vector<Screen>& screens, std::uint32_t id) {
    for (const Screen& screen : screens) {
        if (screen.screenNumber == id) return screen.localizedName;
    }
    return "Display " + std::to_string(id);
}

std::optional<double> fraction(const Json& pointObject, const char* key) {
    const auto member = pointObject.find(key);
    if (member == pointObject.end() || !member->is_number()) return {};
    const double value = member->get<double>();
    // Written so that what is not a number fails, too.
    if (!(value >= 0 && value <= 1)) return {};
    return value;
}

/// From 0 to 1, and never the negative zero.
double limited(double value) {
    return value > 0 ? std::min(value, 1.0) : 0.0;
}

}  // namespace

std::vector<DisplayGeometry> activeDisplays(Displays& displays) {
    const std::vector<std::uint32_t> ids = activeDisplayIds(displays);
    if (ids.empty()) return {};
    const std::vector<Screen> screens = displays.screens();
    std::vector<DisplayGeometry> active;
    active.reserve(ids.size());
    for (const std::uint32_t id : ids) {
        active.push_back({id, displays.displayBounds(id), displayName(screens, id)});
    }
    return active;
}

Rect virtualScreenBounds(Displays& displays, const std::vector<DisplayGeometry>& active) {
    if (active.empty()) return displays.displayBounds(displays.mainDisplayId());
    Rect bounds = active.front().bounds;
    for (std::size_t i = 1; i < active.size(); ++i) bounds = unite(bounds, active[i].bounds);
    return bounds;
}

std::optional<DisplayGeometry> displayContaining(Point point,
                                                 const std::vector<DisplayGeometry>& active) {
    for (const DisplayGeometry& display : active) {
        if (display.bounds.contains(point)) return display;
    }
    if (active.empty()) return {};
    return active.front();
}

std::optional<Point> screenPoint(Displays& displays, const Json& pointObject) {
    const auto x = fraction(pointObject, "x");
    const auto y = fraction(pointObject, "y");
    if (!x || !y) return {};
    const Rect bounds = virtualScreenBounds(displays, activeDisplays(displays));
    if (!bounds.hasArea()) return {};
    return Point{bounds.minX() + *x * bounds.width, bounds.minY() + *y * bounds.height};
}

Json normalizedPoint(Displays& displays, Point point) {
    const Rect bounds = virtualScreenBounds(displays, activeDisplays(displays));
    if (!bounds.hasArea()) return {{"x", 0.0}, {"y", 0.0}};
    return {{"x", limited((point.x - bounds.minX()) / bounds.width)},
            {"y", limited((point.y - bounds.minY()) / bounds.height)}};
}

Json rectJson(const Rect& rect) {
    return {{"x", rect.x}, {"y", rect.y}, {"width", rect.width}, {"height", rect.height}};
}

Json displayJson(const DisplayGeometry& display) {
    return {{"id", display.id}, {"name", display.name}, {"bounds", rectJson(display.bounds)}};
}

std::optional<Json> displayInfo(Displays& displays, Point point) {
    const auto display = displayContaining(point, activeDisplays(displays));
    return display ? std::optional(displayJson(*display)) : std::nullopt;
}

}  // namespace quil
