#include "platform/linux/accessibility/application_windows.h"

#include "platform/linux/accessibility/fact_questions.h"
#include "platform/linux/accessibility/messages.h"

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
        return facts.extents.width == rect.width && facts.extents.height == rect.height;
    };
    return facts.knows(Fact::extents) && (hasSize(window.frame) || hasSize(window.windowRect()));
}

std::deque<ApplicationWindow> applicationWindows(AccessibilityBus& bus,
                                                 const std::vector<std::string>& busNames) {
    std::deque<ApplicationWindow> windows;
    for (const std::string& name : busNames) {
        AtspiProgram& program = bus.introducedProgram(name);
        const std::string root = atspi::kRootPath;
        Facts application;
        for (const Fact fact : {Fact::childCount, Fact::children}) {
            askFacts({program, root, kMaximumWindows}, {fact}, application, [] {});
            bus.waitForAnswers();
        }
        for (Reference& child : application.children) windows.push_back({std::move(child), {}});
    }
    for (ApplicationWindow& window : windows) {
        AtspiProgram& program = bus.program(window.reference.busName);
        askFacts({program, window.reference.path, 0}, {Fact::name, Fact::states, Fact::extents},
                 window.facts, [] {});
    }
    bus.waitForAnswers();
    return windows;
}

}  // namespace quil::linux_platform
