#include "platform/linux/accessibility/focused_window.h"

#include <algorithm>

#include "platform/linux/accessibility/application_windows.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

/// How well a window fits one on the screen; 0 when it cannot be meant.
int fit(const ApplicationWindow& window, const X11Window& onScreen) {
    if (!window.facts.states.has(AtspiState::showing)) return 0;
    return (window.hasTitleOf(onScreen) ? 2 : 0) + (window.hasSizeOf(onScreen) ? 1 : 0);
}

bool isActive(const ApplicationWindow& window) {
    return window.facts.states.has(AtspiState::active);
}

}  // namespace

std::optional<FocusedWindow> focusedWindow(AccessibilityBus& bus, X11Display& display,
                                           std::int32_t pid,
                                           const std::vector<std::string>& busNames) {
    auto windows = applicationWindows(bus, busNames);
    const auto active = std::count_if(windows.begin(), windows.end(), isActive);
    if (active > 0) std::erase_if(windows, [](const auto& window) { return !isActive(window); });
    if (windows.empty()) return {};

    const auto connection = display.connection();
    const auto onScreen = connection ? activeWindow(*connection) : std::nullopt;
    const bool isInFront = onScreen && onScreen->pid == pid;
    const auto found = [&](const ApplicationWindow& window) {
        FocusedWindow focused{window.reference, {}};
        const bool isOnScreen = isInFront && window.hasSizeOf(*onScreen);
        if (isOnScreen && !window.hasTitleOf(*onScreen)) focused.title = onScreen->title;
        return focused;
    };
    if (active == 1) return found(windows.front());
    const auto fitOf = [&](const ApplicationWindow& window) {
        return isInFront ? fit(window, *onScreen) : 0;
    };
    const auto best =
        std::max_element(windows.begin(), windows.end(),
                         [&](const auto& a, const auto& b) { return fitOf(a) < fitOf(b); });
    return active > 0 || fitOf(*best) > 0 ? std::optional(found(*best)) : std::nullopt;
}

}  // namespace quil::linux_platform
