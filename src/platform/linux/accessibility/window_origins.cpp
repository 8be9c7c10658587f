#include "platform/linux/accessibility/window_origins.h"

#include <algorithm>
#include <cmath>

#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/accessibility/gtk_elements.h"
#include "platform/linux/accessibility/observed_tree.h"
#include "platform/linux/atspi/messages.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

/// Deeper than any walk goes.
constexpr int kMaximumDepth = 100;

/// Children of a window of which one is looked for that fills it.
constexpr std::int64_t kMaximumParts = 4;

/// Units of the border around the items of a menu, both sides together.
constexpr double kMenuBorder = 12;

/// Units by which toolkits round.
constexpr double kTolerance = 1;

bool hasArea(const Rect& rect) {
    return rect.width > 0 && rect.height > 0;
}

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

Needs needsOf(FactSet wanted) {
    return [wanted](const Facts& known) { return wanted.without(known.asked); };
}

}  // namespace

Reference WindowOrigins::windowOf(Reference element) {
    for (int depth = 0; depth < kMaximumDepth; ++depth) {
        Facts facts;
        if (readFacts(bus_, element, needsOf({Fact::parent}), facts) != 0) return element;
        if (facts.parent.path.empty() || facts.parent.path == atspi::kRootPath) return element;
        element = facts.parent;
    }
    return element;
}

std::optional<WindowFit> WindowOrigins::fitOnScreen(X11Connection& connection, std::int32_t pid,
                                                    const std::string& title,
                                                    const ToolkitWindow& window) {
    const auto active = activeWindow(connection);
    const auto isNamed = [&](const X11Window& onScreen) {
        return onScreen.title.value_or("") == title;
    };
    if (active && active->pid == pid && isNamed(*active)) {
        const auto fit = fitWindow(window, *active);
        if (fit && fit->hasSize && (fit->hasPosition || window.isWithinWindow)) return fit;
    }
    std::optional<WindowFit> best;
    int bestRank = 0;
    for (const X11Window& onScreen : topLevelWindows(connection)) {
        const auto fit = fitWindow(window, onScreen);
        if (!fit) continue;
        // A sandboxed application may be known by its helper's process.
        const bool isOfProcess = onScreen.pid == pid;
        if (!isOfProcess && !(isNamed(onScreen) && fit->hasSize)) continue;
        const bool isActive = active && active->id == onScreen.id;
        const int rank = 1 + (isOfProcess ? 32 : 0) + (isNamed(onScreen) ? 16 : 0) +
                         (fit->hasSize ? 8 : 0) + (fit->hasPosition ? 4 : 0) +
                         (onScreen.onScreen ? 2 : 0) + (isActive ? 1 : 0);
        if (rank <= bestRank) continue;
        bestRank = rank;
        best = fit;
    }
    if (best) return best;
    for (const PopUp& popUp : popUpsOf(connection, pid)) {
        X11Window onScreen;
        onScreen.frame = popUp.rect;
        const auto fit = fitWindow(window, onScreen);
        if (fit && fit->hasSize && (!best || fit->hasPosition)) best = fit;
    }
    return best;
}

std::optional<WindowOrigins::Window> WindowOrigins::findWindow(const Reference& window,
                                                               Facts facts) {
    AtspiProgram& program = bus_.introducedProgram(window.busName);
    const auto pid = bus_.processId(window.busName);
    const auto connection = display_.connection();
    if (!pid || !connection) return {};
    if (readFacts(bus_, window, needsOf({Fact::name, Fact::extents}), facts) != 0) return {};
    if (!hasArea(facts.extents)) {
        // Swing's windows do not know where they are; what fills them does.
        const auto needs = [](const Facts& known) {
            return FactSet{known.asked.has(Fact::childCount) ? Fact::children : Fact::childCount}
                .without(known.asked);
        };
        readFacts(bus_, window, needs, facts, {.maximumChildren = kMaximumParts});
        for (std::size_t i = 0; i < facts.children.size() && i < kMaximumParts; ++i) {
            Facts part;
            readFacts(bus_, facts.children[i], needsOf({Fact::extents}), part);
            if (!hasArea(part.extents)) continue;
            facts.extents = part.extents;
            break;
        }
    }
    const auto fit =
        fitOnScreen(*connection, *pid, facts.name,
                    {facts.extents, program.hasWholeScales(), program.hasWindowCoordinates()});
    if (!fit) return {};
    Window found{
        fit->map, program.hasWholeScales(), program.hasWindowCoordinates(), program.isSwing(), {}};
    const bool needsPopUps = found.isWithinWindow || found.isSwing || fit->map.scale != 1;
    if (needsPopUps) found.popUps = popUpsOf(*connection, *pid);
    return found;
}

/// Toolkits with window coordinates have those of the wrong window for what is in a pop-up: as if
/// it began in the corner of the element that the pop-up belongs to. The pop-up is as large as the
/// element that fills it, which seems to be in that corner. Several of the same size came up one
/// after the other, as menus and their submenus do. A pop-up for which there are more elements, or
/// fewer, than such windows is nowhere.
WindowOrigins::Displacements WindowOrigins::popoverDisplacements(
    const Window& window, const std::vector<ObservedElement*>& elements) {
    Displacements found;
    std::vector<const PopUp*> left;
    for (const PopUp& popUp : window.popUps) left.push_back(&popUp);
    while (!left.empty()) {
        const Rect rect = left.front()->rect;
        const auto split = std::stable_partition(left.begin(), left.end(), [&](const auto* other) {
            return other->rect.width != rect.width || other->rect.height != rect.height;
        });
        const std::vector<const PopUp*> alike(split, left.end());
        left.erase(split, left.end());

        const auto fills = [&](const ObservedElement* element) {
            const Rect& extents = element->facts.extents;
            return element->parent && element->parent->facts.knows(Fact::extents) &&
                   isNear(extents.width * window.map.scale, rect.width) &&
                   isNear(extents.height * window.map.scale, rect.height) &&
                   isNear(extents.x, element->parent->facts.extents.x) &&
                   isNear(extents.y, element->parent->facts.extents.y);
        };
        std::vector<const ObservedElement*> filling;
        for (const ObservedElement* element : elements) {
            const bool isOutermost = fills(element) && !fills(element->parent);
            if (isOutermost) filling.push_back(element);
        }
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

/// Swing gives the items of a menu positions as if their menu opened over its own title.
WindowOrigins::Displacements WindowOrigins::menuDisplacements(
    const Window& window, const std::vector<ObservedElement*>& elements) {
    Displacements found;
    for (const ObservedElement* menu : elements) {
        if (menu->facts.role != AtspiRole::menu) continue;
        const Displacement displacement = menuDisplacement(window, *menu, elements);
        for (const ObservedElement* item : menu->children) found[item] = displacement;
    }
    return found;
}

WindowOrigins::Displacement WindowOrigins::menuDisplacement(
    const Window& window, const ObservedElement& menu,
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
        if (!hasArea(item->facts.extents)) continue;
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

/// LibreOffice paints its windows itself, into an element of GTK that its root pane fills. Until
/// the first click it places all that is in there as if the window had no menu bar. Elements of GTK
/// inside know where they are.
WindowOrigins::Displacements WindowOrigins::paneDisplacements(
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
    for (const ObservedElement* panel : gtkElements(bus_, panels)) {
        found[panel] = {.isKnown = true};
    }
    return found;
}

WindowOrigins::Displacement WindowOrigins::paneDisplacement(const Rect& extents,
                                                            const Rect& filled) {
    return {.isKnown = isNear(extents.width, filled.width) && isNear(extents.height, filled.height),
            .shift = {filled.x - extents.x, filled.y - extents.y}};
}

/// Chromium counts pixels in its pages, also where it counts larger units around them: a page then
/// fills on the screen what it seems to be larger than. One that is elsewhere is nowhere.
WindowOrigins::Displacements WindowOrigins::documentDisplacements(
    const Window& window, const std::vector<ObservedElement*>& elements) {
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

WindowOrigins::Displacements WindowOrigins::displacements(
    const Window& window, const std::vector<ObservedElement*>& elements) {
    if (window.isWithinWindow) return popoverDisplacements(window, elements);
    if (window.isSwing) return menuDisplacements(window, elements);
    if (window.hasWholeScales) return paneDisplacements(elements);
    return window.map.scale != 1 ? documentDisplacements(window, elements) : Displacements();
}

std::optional<WindowOrigins::Displacement> WindowOrigins::currentDisplacement(
    const Anchor& anchor) {
    if (!anchor.displacement || anchor.displacement->pane.path.empty()) return anchor.displacement;
    Facts pane, filled;
    if (readFacts(bus_, anchor.displacement->pane, needsOf({Fact::extents}), pane) != 0 ||
        readFacts(bus_, anchor.displacement->filledByPane, needsOf({Fact::extents}), filled) != 0) {
        return Displacement();
    }
    return paneDisplacement(pane.extents, filled.extents);
}

std::optional<Rect> WindowOrigins::onScreen(const Window& window, const Anchor& anchor,
                                            const Rect& extents) {
    const Displacement displacement = anchor.displacement.value_or(Displacement{.isKnown = true});
    if (!displacement.isKnown) return {};
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

void WindowOrigins::locateTree(const std::vector<ObservedElement*>& elements) {
    anchors_.clear();
    std::unordered_map<const ObservedElement*, std::vector<ObservedElement*>> byWindow;
    for (ObservedElement* element : elements) {
        if (!element->facts.knows(Fact::extents)) continue;
        const ObservedElement* top = element;
        while (top->parent && top->parent->facts.role != AtspiRole::application) top = top->parent;
        byWindow[top].push_back(element);
    }
    for (auto& [top, inside] : byWindow) {
        const auto window = findWindow(top->reference, top->facts);
        const Displacements displacements =
            window ? this->displacements(*window, inside) : Displacements();
        std::vector<std::pair<ObservedElement*, std::optional<Rect>>> located;
        for (ObservedElement* element : inside) {
            Anchor anchor{top->reference, {}};
            for (const ObservedElement* above = element; above && !displacements.empty();
                 above = above->parent) {
                const auto displacement = displacements.find(above);
                if (displacement == displacements.end()) continue;
                anchor.displacement = displacement->second;
                break;
            }
            located.emplace_back(
                element, window ? onScreen(*window, anchor, element->facts.extents) : std::nullopt);
            anchors_.emplace(element->reference, std::move(anchor));
        }
        for (auto& [element, rect] : located) element->facts.extents = rect.value_or(Rect());
    }
}

void WindowOrigins::locate(const Reference& element, Facts& facts) {
    const auto known = anchors_.find(element);
    Anchor anchor = known != anchors_.end() ? known->second : Anchor{windowOf(element), {}};
    anchor.displacement = currentDisplacement(anchor);
    const auto window = findWindow(anchor.window, {});
    const auto rect = window ? onScreen(*window, anchor, facts.extents) : std::nullopt;
    facts.extents = rect.value_or(Rect());
}

}  // namespace quil::linux_platform
