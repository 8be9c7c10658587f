#include "platform/linux/accessibility/screen_places.h"

#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/atspi/messages.h"
#include "platform/linux/x11/windows/window_search.h"

namespace quil::linux_platform {
namespace {

/// Deeper trees than any walk comes to.
constexpr int kMaximumDepth = 100;

}  // namespace

Reference ScreenPlaces::windowOf(Reference element) {
    for (int depth = 0; depth < kMaximumDepth; ++depth) {
        Facts facts;
        const Needs needs = [](const Facts& known) {
            return FactSet{Fact::parent}.without(known.asked);
        };
        if (readFacts(bus_, element, needs, facts) != 0) return element;
        if (facts.parent.path.empty() || facts.parent.path == atspi::kRootPath) return element;
        element = facts.parent;
    }
    return element;
}

std::optional<Point> ScreenPlaces::origin(const Reference& window) {
    const auto pid = bus_.processId(window.busName);
    Facts facts;
    const Needs needs = [](const Facts& known) {
        return FactSet{Fact::name, Fact::extents}.without(known.asked);
    };
    if (!pid || readFacts(bus_, window, needs, facts) != 0) return {};
    const Size size{facts.extents.width, facts.extents.height};
    const auto connection = display_.connection();
    const auto found = connection ? findWindow(*connection, *pid, facts.name, size) : std::nullopt;
    if (!found) return {};
    const Rect outer = found->windowRect();
    const bool hasShadows = outer.width == size.width && outer.height == size.height;
    return hasShadows ? Point{outer.x, outer.y} : Point{found->frame.x, found->frame.y};
}

void ScreenPlaces::place(Facts& facts, const std::optional<Point>& origin) {
    if (!facts.knows(Fact::extents)) return;
    if (origin) {
        facts.extents.x += origin->x;
        facts.extents.y += origin->y;
    } else {
        facts.extents = {};
    }
}

}  // namespace quil::linux_platform
