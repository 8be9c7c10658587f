#include "platform/linux/accessibility/page_scrolling.h"

#include <algorithm>
#include <cmath>

#include "platform/linux/accessibility/attributes.h"
#include "platform/linux/accessibility/element_calls.h"
#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/accessibility/range_values.h"
#include "platform/linux/atspi/messages.h"
#include "platform/linux/x11/input/pointer_output.h"

namespace quil::linux_platform {
namespace {

/// Points of a line of text, of those who scroll by lines.
constexpr double kLineHeight = 18;

/// Clicks of the wheel that make a page.
constexpr int kMaximumWheelTurns = 60;

/// The first children are looked at for one that is somewhere.
constexpr std::size_t kContentParts = 8;

/// Where an element is, as its program sees it, also when that is out of sight.
Rect extentsOf(AccessibilityBus& bus, const Reference& element) {
    Facts facts;
    readFacts(bus, element, needsOf({Fact::extents}), facts);
    return facts.knows(Fact::extents) ? facts.extents : Rect();
}

/// The mouse wheel, turned over a point; the pointer is back where it was afterwards.
class Wheel {
  public:
    Wheel(X11Connection& connection, Point over) : connection_(connection), over_(over) {
        const auto pointer = connection.reply(
            xcb_query_pointer_reply, xcb_query_pointer(connection.get(), connection.root()));
        if (pointer) before_ = Point{double(pointer->root_x), double(pointer->root_y)};
    }
    ~Wheel() {
        if (before_) send(kEventMouseMoved, *before_, 0);
    }

    void turn(bool isDown) { send(kEventScrollWheel, over_, isDown ? -1 : 1); }

  private:
    void send(std::uint32_t type, Point location, std::int32_t turns) {
        PostedEvent event;
        event.type = type;
        event.location = location;
        event.wheel1 = turns;
        output_.send(connection_, event);
        connection_.sync();
    }

    X11Connection& connection_;
    Point over_;
    std::optional<Point> before_;
    PointerOutput output_;
};

std::int32_t scrollByWheel(AccessibilityBus& bus, X11Display& display, const Facts& pane,
                           const Rect& area, double page, bool isDown) {
    const auto connection = display.connection();
    if (!connection || !area.hasArea()) return kAxFailure;
    Wheel wheel(*connection, {area.x + area.width / 2, area.y + area.height / 2});
    const auto position = [&] { return rangeProperty(bus, pane.scrollBar, "CurrentValue"); };
    const auto begin = position();
    auto now = begin;
    for (int i = 0; i < kMaximumWheelTurns && now && std::abs(*now - *begin) < page; ++i) {
        wheel.turn(isDown);
        if (!numberChanges(bus, pane.scrollBar, *now)) break;
        now = position();
    }
    return now != begin ? 0 : kAxFailure;
}

/// Scroll bars count in the pane's own units, of which the bar does not say how many a page has:
/// for all but short contents they are points.
std::int32_t scrollByBar(AccessibilityBus& bus, X11Display& display, WindowOrigins& origins,
                         const Reference& element, const Facts& pane, bool isDown) {
    const Reference& bar = pane.scrollBar;
    const auto position = rangeProperty(bus, bar, "CurrentValue");
    const auto minimum = rangeProperty(bus, bar, "MinimumValue");
    const auto maximum = rangeProperty(bus, bar, "MaximumValue");
    if (!position || !minimum || !maximum) return kAxCannotComplete;
    const auto step = rangeProperty(bus, bar, "MinimumIncrement");
    const double unit = step == 1.0 ? kLineHeight : 1.0;
    const double page = std::max(std::floor(pane.extents.height / unit), 1.0);
    const double wanted =
        std::clamp(*position + (isDown ? page : -page), *minimum, std::max(*minimum, *maximum));
    if (wanted == *position) return 0;
    const std::int32_t code = command(bus, bar, atspi::kProperties, "Set", "ssv", atspi::kValue,
                                      "CurrentValue", "d", wanted);
    if (code == 0 && numberChanges(bus, bar, *position)) return 0;
    Facts located = pane;
    origins.locate(element, located);
    return scrollByWheel(bus, display, pane, located.extents, page, isDown);
}

/// Browsers put a part of a page where it is asked for.
std::int32_t scrollContent(AccessibilityBus& bus, const Reference& page, const Facts& facts,
                           bool isDown) {
    const Rect view = extentsOf(bus, page);
    const auto last = std::min(facts.children.size(), kContentParts);
    Reference part;
    Rect before;
    for (std::size_t i = 0; i < last && before.height <= 0; ++i) {
        part = facts.children[i];
        before = extentsOf(bus, part);
    }
    if (view.height <= 0 || before.height <= 0) return kAxFailure;
    const double wanted = before.y + (isDown ? -view.height : view.height);
    constexpr std::uint32_t kOnScreen = 0;
    const std::int32_t code =
        command(bus, part, atspi::kComponent, "ScrollToPoint", "uii", kOnScreen,
                static_cast<std::int32_t>(before.x), static_cast<std::int32_t>(wanted));
    if (code != 0) return code;
    if (becomesTrue([&] { return extentsOf(bus, part).y != before.y; })) return 0;
    const Rect end = isDown ? extentsOf(bus, facts.children.back()) : before;
    const bool isAtEnd = isDown ? end.y < view.y + view.height : end.y >= view.y;
    return isAtEnd ? 0 : kAxFailure;
}

}  // namespace

std::int32_t scrollByPage(AccessibilityBus& bus, X11Display& display, WindowOrigins& origins,
                          const Reference& element, bool isDown) {
    Facts facts;
    readScrollBar(bus, element, facts);
    if (facts.code(Fact::scrollBar) != 0) return facts.code(Fact::scrollBar);
    if (!facts.scrollBar.path.empty()) {
        readFacts(bus, element, findAttribute("AXSize")->needs, facts);
        return scrollByBar(bus, display, origins, element, facts, isDown);
    }
    Facts page;
    const Needs needs = [](const Facts& known) {
        const FactSet next = needsForActions(known);
        return next.isEmpty() ? findAttribute("AXChildren")->needs(known) : next;
    };
    const std::int32_t code = readFacts(bus, element, needs, page);
    if (code != 0) return code;
    return isScrolledPage(page) ? scrollContent(bus, element, page, isDown) : kAxActionUnsupported;
}

}  // namespace quil::linux_platform
