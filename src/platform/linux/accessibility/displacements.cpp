#include "platform/linux/accessibility/displacements.h"

#include <algorithm>
#include <cmath>

#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/accessibility/gtk_elements.h"

namespace quil::linux_platform {
namespace {

/// Units of the border around the items of a menu, both sides together.
constexpr double kMenuBorder = 12;

/// Units of what GTK 4.18 leaves out, the padding of all that an element is in.
constexpr double kMaximumPadding = 48;

/// Units by which toolkits round.
constexpr double kTolerance = 1;

/// GTK places what is not on the screen at the end of its numbers, and what is in there (the icons
/// of a page that is not shown) near it.
constexpr double kFarthest = -(1 << 30);

/// GTK 4.18 gives what it has not laid out yet any size that happens to be in memory.
constexpr double kLargest = 1 << 24;

bool isNear(double a, double b) {
    return std::abs(a - b) <= kTolerance;
}

Point centreOf(const Rect& rect) {
    return {rect.x + rect.width / 2, rect.y + rect.height / 2};
}

int depthOf(const ObservedElement& element) {
    int depth = 0;
    for (const ObservedElement* above = element.parent; above; above = above->parent) ++depth;
    return depth;
}

/// Whether the element is a window.
bool isTop(const ObservedElement& element) {
    return !element.parent || element.parent->facts.role == AtspiRole::application;
}

/// GTK 4.18 counts in a window from its content's corner, but as if its border (which is drawn
/// where there are no shadows) had no width. The window itself begins before that corner, by that
/// width.
Displacements contentDisplacements(const LocatedWindow& window,
                                   const std::vector<ObservedElement*>& elements) {
    Displacements found;
    const Point border{-window.map.from.x, -window.map.from.y};
    if (std::max(border.x, border.y) <= 0) return found;
    for (const ObservedElement* element : elements) {
        const ObservedElement* above = element->parent;
        if (!above || isTop(*element) || !isTop(*above)) continue;
        found[element] = {.isKnown = true, .shift = border};
    }
    return found;
}

/// Those for which the predicate holds, but not for what they are in.
template <typename Predicate>
std::vector<const ObservedElement*> outermost(const std::vector<ObservedElement*>& elements,
                                              const Predicate& holds) {
    std::vector<const ObservedElement*> found;
    for (const ObservedElement* element : elements) {
        if (holds(element) && !holds(element->parent)) found.push_back(element);
    }
    return found;
}

/// Toolkits with window coordinates have those of the wrong window for what is in a pop-up: as if
/// it began in the corner of the element that the pop-up belongs to, or (GTK 4.18) near where it
/// is. The pop-up is as large as the element that fills it, which seems to be in that corner if any
/// of that size does. Several of the same size came up one after the other, as menus and their
/// submenus do. A pop-up for which there are more elements, or fewer, than such windows is nowhere.
Displacements popoverDisplacements(const LocatedWindow& window,
                                   const std::vector<ObservedElement*>& elements) {
    Displacements found = contentDisplacements(window, elements);
    std::vector<const PopUp*> left;
    for (const PopUp& popUp : window.popUps) left.push_back(&popUp);
    while (!left.empty()) {
        const Rect rect = left.front()->rect;
        const auto split = std::stable_partition(left.begin(), left.end(), [&](const auto* other) {
            return other->rect.width != rect.width || other->rect.height != rect.height;
        });
        const std::vector<const PopUp*> alike(split, left.end());
        left.erase(split, left.end());

        const auto isAsLarge = [&](const ObservedElement* element) {
            const Rect& extents = element->facts.extents;
            return element->parent && element->parent->facts.knows(Fact::extents) &&
                   isNear(extents.width * window.map.scale, rect.width) &&
                   isNear(extents.height * window.map.scale, rect.height);
        };
        const auto isInCorner = [&](const ObservedElement* element) {
            return isAsLarge(element) &&
                   isNear(element->facts.extents.x, element->parent->facts.extents.x) &&
                   isNear(element->facts.extents.y, element->parent->facts.extents.y);
        };
        std::vector<const ObservedElement*> filling = outermost(elements, isInCorner);
        const auto isNearby = [&](const ObservedElement* element) {
            const Rect place = window.map.onScreen(element->facts.extents);
            return isAsLarge(element) &&
                   std::abs(place.x - rect.x) <= kMaximumPadding * window.map.scale &&
                   std::abs(place.y - rect.y) <= kMaximumPadding * window.map.scale;
        };
        if (filling.empty()) filling = outermost(elements, isNearby);
        std::sort(filling.begin(), filling.end(),
                  [](const auto* a, const auto* b) { return depthOf(*a) < depthOf(*b); });
        for (std::size_t i = 0; i < filling.size(); ++i) {
            const Rect& extents = filling[i]->facts.extents;
            found[filling[i]] = {.isKnown = filling.size() == alike.size(),
                                 .popUp = alike[std::min(i, alike.size() - 1)]->id,
                                 .popUpFrom = {extents.x, extents.y}};
        }
    }
    return found;
}

Displacement menuDisplacement(const LocatedWindow& window, const ObservedElement& menu,
                              const std::vector<ObservedElement*>& elements) {
    const Point corner{menu.facts.extents.x, menu.facts.extents.y};
    // A menu that fits into the window is an element in it, with the same items.
    for (const ObservedElement* other : elements) {
        if (other->facts.role != AtspiRole::popupMenu || other->children != menu.children) continue;
        const Rect& extents = other->facts.extents;
        return {.isKnown = true, .shift = {extents.x - corner.x, extents.y - corner.y}};
    }
    // Others are X windows, of just the size for the items.
    Point end = corner;
    for (const ObservedElement* item : menu.children) {
        if (!item->facts.extents.hasArea()) continue;
        end = {std::max(end.x, item->facts.extents.maxX()),
               std::max(end.y, item->facts.extents.maxY())};
    }
    Displacement displacement;
    for (const PopUp& popUp : window.popUps) {
        const double right = popUp.rect.width / window.map.scale - (end.x - corner.x);
        const double below = popUp.rect.height / window.map.scale - (end.y - corner.y);
        if (std::min(right, below) < 0 || std::max(right, below) > kMenuBorder) continue;
        // Of two that would do, neither is known to be the right one.
        displacement = {.isKnown = displacement.popUp == XCB_WINDOW_NONE,
                        .popUp = popUp.id,
                        .popUpFrom = corner};
    }
    return displacement;
}

/// Swing gives the items of a menu positions as if their menu opened over its own title.
Displacements menuDisplacements(const LocatedWindow& window,
                                const std::vector<ObservedElement*>& elements) {
    Displacements found;
    for (const ObservedElement* menu : elements) {
        if (menu->facts.role != AtspiRole::menu) continue;
        const Displacement displacement = menuDisplacement(window, *menu, elements);
        for (const ObservedElement* item : menu->children) found[item] = displacement;
    }
    return found;
}

Displacement paneDisplacement(const Rect& extents, const Rect& filled) {
    return {.isKnown = isNear(extents.width, filled.width) && isNear(extents.height, filled.height),
            .shift = {filled.x - extents.x, filled.y - extents.y}};
}

/// LibreOffice paints its windows itself, into an element of GTK that its root pane fills. Until
/// the first click it places all that is in there as if the window had no menu bar. Elements of GTK
/// inside know where they are.
Displacements paneDisplacements(AccessibilityBus& bus,
                                const std::vector<ObservedElement*>& elements) {
    Displacements found;
    for (const ObservedElement* pane : elements) {
        if (pane->facts.role != AtspiRole::rootPane || !pane->parent) continue;
        if (!pane->parent->facts.knows(Fact::extents)) continue;
        Displacement displacement =
            paneDisplacement(pane->facts.extents, pane->parent->facts.extents);
        if (displacement.isKnown && displacement.shift == Point()) continue;
        displacement.pane = pane->reference;
        displacement.filledByPane = pane->parent->reference;
        found[pane] = displacement;
    }
    if (found.empty()) return found;
    std::vector<const ObservedElement*> panels;
    for (const ObservedElement* element : elements) {
        if (element->facts.role == AtspiRole::panel) panels.push_back(element);
    }
    for (const ObservedElement* panel : gtkElements(bus, panels)) {
        found[panel] = {.isKnown = true};
    }
    return found;
}

/// Chromium counts pixels in its pages, also where it counts larger units around them: a page then
/// fills on the screen what it seems to be larger than. One that is elsewhere is nowhere.
Displacements documentDisplacements(const LocatedWindow& window,
                                    const std::vector<ObservedElement*>& elements) {
    Displacements found;
    for (const ObservedElement* document : elements) {
        if (document->facts.role != AtspiRole::documentWeb || !document->parent) continue;
        const Facts& above = document->parent->facts;
        if (!above.knows(Fact::extents)) continue;
        const Rect& extents = document->facts.extents;
        const Rect filled = window.map.onScreen(above.extents);
        const double tolerance = 2 * window.map.scale;
        const bool isInPixels = std::abs(extents.width - filled.width) <= tolerance &&
                                std::abs(extents.height - filled.height) <= tolerance;
        if (!isInPixels) continue;
        const bool isThere = std::abs(extents.x - filled.x) <= tolerance &&
                             std::abs(extents.y - filled.y) <= tolerance;
        found[document] = {.isKnown = isThere, .isInPixels = true};
    }
    return found;
}

}  // namespace

Displacements displacementsIn(AccessibilityBus& bus, const LocatedWindow& window,
                              const std::vector<ObservedElement*>& elements) {
    if (window.isWithinWindow) return popoverDisplacements(window, elements);
    if (window.isSwing) return menuDisplacements(window, elements);
    if (window.hasWholeScales) return paneDisplacements(bus, elements);
    return window.map.scale != 1 ? documentDisplacements(window, elements) : Displacements();
}

Displacement currentDisplacement(AccessibilityBus& bus, const Displacement& displacement) {
    if (displacement.pane.path.empty()) return displacement;
    Facts pane, filled;
    if (readFacts(bus, displacement.pane, needsOf({Fact::extents}), pane) != 0 ||
        readFacts(bus, displacement.filledByPane, needsOf({Fact::extents}), filled) != 0) {
        return {};
    }
    return paneDisplacement(pane.extents, filled.extents);
}

std::optional<Rect> onScreen(const LocatedWindow& window, const Displacement& displacement,
                             const Rect& extents) {
    if (!displacement.isKnown || std::min(extents.x, extents.y) < kFarthest) return {};
    if (std::max(extents.width, extents.height) > kLargest) return {};
    if (displacement.isInPixels) return extents;
    const Rect moved{extents.x + displacement.shift.x, extents.y + displacement.shift.y,
                     extents.width, extents.height};
    const Rect rect = window.map.onScreen(moved);
    for (auto popUp = window.popUps.rbegin(); popUp != window.popUps.rend(); ++popUp) {
        if (displacement.popUp == popUp->id) {
            return CoordinateMap{
                displacement.popUpFrom, {popUp->rect.x, popUp->rect.y}, window.map.scale}
                .onScreen(extents);
        }
        if (window.isWithinWindow || displacement.popUp != XCB_WINDOW_NONE) continue;
        if (!popUp->rect.contains(centreOf(rect))) continue;
        return mapInPopUp(window.map, window.hasWholeScales, popUp->rect).onScreen(moved);
    }
    // What is in a pop-up that has gone is nowhere.
    return displacement.popUp == XCB_WINDOW_NONE ? std::optional(rect) : std::nullopt;
}

}  // namespace quil::linux_platform
