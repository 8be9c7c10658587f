#include "platform/linux/accessibility/focused_window.h"

#include <algorithm>
#include <deque>

#include "platform/linux/accessibility/fact_questions.h"
#include "platform/linux/accessibility/messages.h"
#include "platform/linux/x11/window_stack.h"

namespace quil::linux_platform {
namespace {

/// The windows of an application that are looked at.
constexpr std::int64_t kMaximumWindows = 256;

struct Window {
    Reference reference;
    Facts facts;
    int fit = 0;
};

/// The windows with their names, states and extents.
std::deque<Window> windowsOf(AccessibilityBus& bus, const std::vector<std::string>& busNames) {
    std::deque<Window> windows;
    for (const std::string& name : busNames) {
        AtspiProgram& program = bus.introducedProgram(name);
        const std::string root = atspi::kRootPath;
        Facts application;
        for (const Fact fact : {Fact::childCount, Fact::children}) {
            askFacts({program, root, kMaximumWindows}, {fact}, application, [] {});
            bus.waitForAnswers();
        }
        for (Reference& child : application.children) windows.push_back({std::move(child), {}, 0});
    }
    for (Window& window : windows) {
        AtspiProgram& program = bus.program(window.reference.busName);
        askFacts({program, window.reference.path, 0}, {Fact::name, Fact::states, Fact::extents},
                 window.facts, [] {});
    }
    bus.waitForAnswers();
    return windows;
}

/// How well an element fits a window on the screen; 0 when it cannot be meant.
int fit(const Facts& facts, const X11Window& window) {
    if (!facts.states.has(AtspiState::showing)) return 0;
    const auto hasSize = [&](const Rect& rect) {
        return facts.extents.width == rect.width && facts.extents.height == rect.height;
    };
    const bool hasTitle = facts.name == window.title.value_or("");
    return (hasTitle ? 2 : 0) + (hasSize(window.frame) || hasSize(window.windowRect()) ? 1 : 0);
}

}  // namespace

std::optional<Reference> focusedWindow(AccessibilityBus& bus, X11Display& display, std::int32_t pid,
                                       const std::vector<std::string>& busNames) {
    auto windows = windowsOf(bus, busNames);
    const auto isActive = [](const Window& window) {
        return window.facts.states.has(AtspiState::active);
    };
    const auto active = std::count_if(windows.begin(), windows.end(), isActive);
    if (active > 0) std::erase_if(windows, [&](const Window& window) { return !isActive(window); });
    if (active == 1) return windows.front().reference;

    const auto connection = display.connection();
    const auto onScreen = connection ? activeWindow(*connection) : std::nullopt;
    if (onScreen && onScreen->pid == pid) {
        for (Window& window : windows) window.fit = fit(window.facts, *onScreen);
    }
    const auto best =
        std::max_element(windows.begin(), windows.end(),
                         [](const Window& a, const Window& b) { return a.fit < b.fit; });
    const bool isFound = best != windows.end() && (best->fit > 0 || active > 0);
    return isFound ? std::optional(best->reference) : std::nullopt;
}

}  // namespace quil::linux_platform
