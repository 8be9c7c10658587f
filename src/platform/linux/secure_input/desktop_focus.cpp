#include "platform/linux/secure_input/desktop_focus.h"

#include <algorithm>

#include "platform/linux/applications/processes.h"
#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {

DesktopFocus::DesktopFocus(X11Display& display, const ServerClock& clock)
    : display_(display), clock_(clock), reports_(AtspiFocusReports::open(display)) {}

void DesktopFocus::prepareToWait(std::vector<pollfd>& descriptors) {
    if (reports_) descriptors.push_back(reports_->waiting());
}

ActiveProgram DesktopFocus::activeProgram() {
    const auto connection = display_.connection();
    const auto window = connection ? activeWindow(*connection) : std::nullopt;
    if (!window) return {};
    const std::uint32_t mask = xcb_get_setup(connection->get())->resource_id_mask;
    const auto timeWindow =
        readProperty(*connection, window->id, "_NET_WM_USER_TIME_WINDOW").number();
    return {.pid = window->pid,
            .client = window->id & ~mask,
            .userTimeWindow = timeWindow.value_or(window->id)};
}

std::optional<TapTime> DesktopFocus::latestPressOf(const ActiveProgram& program) {
    if (program.userTimeWindow == XCB_WINDOW_NONE) return {};
    const auto connection = display_.connection();
    if (!connection) return {};
    const auto time =
        readProperty(*connection, program.userTimeWindow, "_NET_WM_USER_TIME").number();
    return time ? std::optional(clock_.timeOf(*time)) : std::nullopt;
}

bool DesktopFocus::isHelperOf(std::int32_t pid, std::int32_t program) {
    if (!isDescendantOf(pid, program)) return false;
    const auto connection = display_.connection();
    if (!connection) return true;
    const auto windows = topLevelWindows(*connection);
    return std::ranges::none_of(windows,
                                [&](const X11Window& window) { return window.pid == pid; });
}

}  // namespace quil::linux_platform
