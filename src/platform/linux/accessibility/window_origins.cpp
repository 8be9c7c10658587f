#include "platform/linux/accessibility/window_origins.h"

#include <algorithm>

#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/accessibility/observed_tree.h"
#include "platform/linux/accessibility/visible_areas.h"
#include "platform/linux/atspi/messages.h"

namespace quil::linux_platform {
namespace {

/// Deeper than any walk goes.
constexpr int kMaximumDepth = 100;

/// Of elements that are where their program says.
const Displacement kNone{.isKnown = true};

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
        const auto window = locateWindow(bus_, display_, top->reference, top->facts);
        const Displacements displacements =
            window ? displacementsIn(bus_, *window, inside) : Displacements();
        std::vector<std::pair<ObservedElement*, std::optional<Rect>>> located;
        for (ObservedElement* element : inside) {
            Anchor anchor{top->reference, kNone, {}};
            for (const ObservedElement* above = element; above && !displacements.empty();
                 above = above->parent) {
                const auto displacement = displacements.find(above);
                if (displacement == displacements.end()) continue;
                anchor.displacement = displacement->second;
                break;
            }
            located.emplace_back(
                element, window ? onScreen(*window, anchor.displacement, element->facts.extents)
                                : std::nullopt);
            anchors_.emplace(element->reference, std::move(anchor));
        }
        for (auto& [element, rect] : located) element->facts.extents = rect.value_or(Rect());
        if (window) leaveOutHidden(*window, inside);
    }
}

void WindowOrigins::leaveOutHidden(const LocatedWindow& window,
                                   const std::vector<ObservedElement*>& elements) {
    std::optional<std::vector<PopUp>> popUps;
    VisibleAreas areas([&](Point point) {
        if (!popUps) popUps = popUpsWith(window);
        return std::any_of(popUps->begin(), popUps->end(),
                           [&](const PopUp& popUp) { return popUp.rect.contains(point); });
    });
    std::vector<std::pair<ObservedElement*, Rect>> cut;
    for (ObservedElement* element : elements) {
        if (const auto area = areas.areaOf(*element)) cut.emplace_back(element, *area);
    }
    for (auto& [element, area] : cut) {
        element->facts.extents = intersection(element->facts.extents, area);
        area.x -= window.map.to.x;
        area.y -= window.map.to.y;
        anchors_[element->reference].visible = area;
    }
}

std::vector<PopUp> WindowOrigins::popUpsWith(const LocatedWindow& window) {
    if (!window.popUps.empty()) return window.popUps;
    const auto connection = display_.connection();
    return connection ? popUpsOf(*connection, window.pid) : std::vector<PopUp>();
}

void WindowOrigins::locate(const Reference& element, Facts& facts) {
    const auto known = anchors_.find(element);
    Anchor anchor = known != anchors_.end() ? known->second : Anchor{windowOf(element), kNone, {}};
    anchor.displacement = currentDisplacement(bus_, anchor.displacement);
    const auto window = locateWindow(bus_, display_, anchor.window, {});
    const auto rect = window ? onScreen(*window, anchor.displacement, facts.extents) : std::nullopt;
    facts.extents = rect.value_or(Rect());
    if (!window || !anchor.visible) return;
    Rect visible = *anchor.visible;
    visible.x += window->map.to.x;
    visible.y += window->map.to.y;
    facts.extents = intersection(facts.extents, visible);
}

}  // namespace quil::linux_platform
