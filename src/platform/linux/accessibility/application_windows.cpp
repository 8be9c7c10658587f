#include "platform/linux/accessibility/application_windows.h"

#include "platform/linux/accessibility/coordinate_map.h"
#include "platform/linux/atspi/element_query.h"
#include "platform/linux/atspi/messages.h"

namespace quil::linux_platform {
namespace {

/// The windows of an application that are looked at.
constexpr std::int64_t kMaximumWindows = 256;

}  // namespace

bool ApplicationWindow::hasTitleOf(const X11Window& window) const {
    return facts.knows(Fact::name) && facts.name == window.title.value_or("");
}

bool ApplicationWindow::hasSizeOf(const X11Window& window) const {
    const auto hasSize = [&](const Rect& rect) {
        return exactScale({facts.extents.width, facts.extents.height}, {rect.width, rect.height},
                          false)
            .has_value();
    };
    return facts.knows(Fact::extents) && (hasSize(window.frame) || hasSize(window.windowRect()));
}

std::deque<ApplicationWindow> applicationWindows(AccessibilityBus& bus,
                                                 const std::vector<std::string>& busNames) {
    // All of them at a time: those who do not reply cost one wait together.
    bus.introduce(busNames);
    const std::string root = atspi::kRootPath;
    std::vector<Facts> applications(busNames.size());
    for (const Fact fact : {Fact::childCount, Fact::children}) {
        for (std::size_t i = 0; i < busNames.size(); ++i) {
            AtspiProgram& program = bus.program(busNames[i]);
            queryFacts({program, root, kMaximumWindows}, {fact}, applications[i], [] {});
        }
        bus.waitForReplies();
    }
    std::deque<ApplicationWindow> windows;
    for (Facts& application : applications) {
        for (Reference& child : application.children) windows.push_back({std::move(child), {}});
    }
    for (ApplicationWindow& window : windows) {
        AtspiProgram& program = bus.program(window.reference.busName);
        queryFacts({program, window.reference.path, 0}, {Fact::name, Fact::states, Fact::extents},
                   window.facts, [] {});
    }
    bus.waitForReplies();
    return windows;
}

}  // namespace quil::linux_platform
