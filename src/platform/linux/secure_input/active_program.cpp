#include "platform/linux/secure_input/active_program.h"

#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {

ActiveProgram findActiveProgram(X11Connection& connection) {
    const auto window = activeWindow(connection);
    if (!window) return {};
    const std::uint32_t mask = xcb_get_setup(connection.get())->resource_id_mask;
    const auto bearer = readProperty(connection, window->id, "_NET_WM_USER_TIME_WINDOW").number();
    return {.pid = window->pid,
            .client = window->id & ~mask,
            .userTimeWindow = bearer.value_or(window->id)};
}

std::optional<std::uint32_t> latestPressOf(X11Connection& connection,
                                           const ActiveProgram& program) {
    if (program.userTimeWindow == XCB_WINDOW_NONE) return {};
    return readProperty(connection, program.userTimeWindow, "_NET_WM_USER_TIME").number();
}

}  // namespace quil::linux_platform
