#include "platform/linux/accessibility/visible_areas.h"

#include <algorithm>

namespace quil::linux_platform {
namespace {

bool contains(const Rect& outer, const Rect& inner) {
    return outer.minX() <= inner.minX() && inner.maxX() <= outer.maxX() &&
           outer.minY() <= inner.minY() && inner.maxY() <= outer.maxY();
}

bool isHiddenList(const Facts& facts) {
    return facts.states.has(AtspiState::managesDescendants) &&
           !facts.states.has(AtspiState::showing);
}

/// Whether it shows as much of what is in it as there is room for.
bool isPane(const Facts& facts) {
    return facts.role == AtspiRole::scrollPane || !facts.scrollBar.path.empty() ||
           facts.states.has(AtspiState::managesDescendants);
}

}  // namespace

Rect intersection(const Rect& a, const Rect& b) {
    const double x = std::max(a.minX(), b.minX());
    const double y = std::max(a.minY(), b.minY());
    return {x, y, std::max(0.0, std::min(a.maxX(), b.maxX()) - x),
            std::max(0.0, std::min(a.maxY(), b.maxY()) - y)};
}

std::optional<Rect> VisibleAreas::areaOf(const ObservedElement& element) {
    if (!element.parent) return {};
    const std::optional<Rect> area = inside(*element.parent).area;
    const Rect& extents = element.facts.extents;
    if (!area || contains(*area, extents)) return {};
    // Lists of choices, menus and the like are not bound to the window that they belong to.
    const Point centre{extents.x + extents.width / 2, extents.y + extents.height / 2};
    return isInPopUp_(centre) ? std::nullopt : area;
}

const VisibleAreas::Inside& VisibleAreas::inside(const ObservedElement& element) {
    const auto known = inside_.find(&element);
    if (known != inside_.end()) return known->second;
    const Facts& facts = element.facts;
    Inside found;
    if (element.parent) found = inside(*element.parent);
    if (facts.role == AtspiRole::documentWeb) found = {{}, true};
    if (found.isPage) return inside_[&element] = found;
    if (isHiddenList(facts)) {
        found.area = Rect();
    } else if (isPane(facts) && facts.knows(Fact::extents)) {
        const auto area = areaOf(element);
        found.area = area ? intersection(*area, facts.extents) : facts.extents;
    }
    return inside_[&element] = found;
}

}  // namespace quil::linux_platform
