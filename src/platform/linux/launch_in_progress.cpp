#include "platform/linux/launch_in_progress.h"

#include "platform/linux/x11/windows/window_activation.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

/// Slow programs have shown their windows by then.
constexpr std::chrono::seconds kLaunchLimit{30};

xcb_window_t idOf(const std::optional<X11Window>& window) {
    return window ? window->id : xcb_window_t{XCB_WINDOW_NONE};
}

}  // namespace

LaunchInProgress::LaunchInProgress(X11Connection& connection, std::string_view entryPath)
    : entryPath_(entryPath), activeBefore_(idOf(activeWindow(connection))) {
    for (const X11Window& window : topLevelWindows(connection)) known_.insert(window.id);
}

bool LaunchInProgress::follow(X11Connection& connection,
                              const std::function<bool(const X11Window&)>& isLaunched) {
    if (std::chrono::steady_clock::now() - begin_ > kLaunchLimit) return true;
    const auto active = activeWindow(connection);
    if (active && (active->id != activeBefore_ || isLaunched(*active))) return true;
    for (const X11Window& window : topLevelWindows(connection)) {
        const bool isWanted = window.layer == 0 && window.onScreen &&
                              (window.demandsAttention || !known_.contains(window.id));
        if (!isWanted || broughtToFront_.contains(window.id) || !isLaunched(window)) continue;
        broughtToFront_.insert(window.id);
        bringToFront(connection, window.id);
        return false;
    }
    return false;
}

}  // namespace quil::linux_platform
