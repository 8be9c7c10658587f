#include "platform/linux/x11/windows/pop_ups.h"

#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/windows/window_layers.h"
#include "platform/linux/x11/windows/window_owners.h"
#include "platform/linux/x11/windows/window_tree.h"

namespace quil::linux_platform {
namespace {

/// Toolkits keep tiny windows for purposes of their own.
constexpr int kSmallest = 8;

/// Those of the root's children that are shown and bypass the window manager.
std::vector<PopUp> shownPopUps(X11Connection& connection) {
    struct Request {
        xcb_window_t window;
        xcb_get_window_attributes_cookie_t attributes;
        xcb_get_geometry_cookie_t geometry;
    };
    std::vector<Request> requests;
    for (const xcb_window_t window : childrenOfRoot(connection)) {
        requests.push_back({window, xcb_get_window_attributes(connection.get(), window),
                            xcb_get_geometry(connection.get(), window)});
    }
    std::vector<PopUp> popUps;
    for (const Request& request : requests) {
        const auto attributes =
            connection.reply(xcb_get_window_attributes_reply, request.attributes);
        const auto geometry = connection.reply(xcb_get_geometry_reply, request.geometry);
        if (!attributes || !geometry || !attributes->override_redirect ||
            attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT ||
            attributes->map_state != XCB_MAP_STATE_VIEWABLE || geometry->width < kSmallest ||
            geometry->height < kSmallest) {
            continue;
        }
        // The position that the server gives is that of the border's corner.
        popUps.push_back(
            {request.window,
             {static_cast<double>(geometry->x + geometry->border_width),
              static_cast<double>(geometry->y + geometry->border_width),
              static_cast<double>(geometry->width), static_cast<double>(geometry->height)}});
    }
    return popUps;
}

}  // namespace

std::optional<xcb_window_t> topmostMenu(X11Connection& connection) {
    const auto windows = childrenOfRoot(connection);
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
        const auto attributes = connection.reply(
            xcb_get_window_attributes_reply, xcb_get_window_attributes(connection.get(), *window));
        if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE) continue;
        const auto types = readProperty(connection, *window, "_NET_WM_WINDOW_TYPE").numbers();
        const bool isMenu = windowLayer(connection, types) == kMenuLayer;
        return isMenu ? std::optional(*window) : std::nullopt;
    }
    return {};
}

std::vector<PopUp> popUpsOf(X11Connection& connection, std::int32_t pid) {
    const std::vector<PopUp> shown = shownPopUps(connection);
    if (shown.empty()) return {};
    std::vector<xcb_window_t> windows;
    std::vector<PropertyRequest> processes, machines;
    for (const PopUp& popUp : shown) {
        windows.push_back(popUp.id);
        processes.emplace_back(connection, popUp.id, "_NET_WM_PID");
        machines.emplace_back(connection, popUp.id, "WM_CLIENT_MACHINE");
    }
    WindowOwners owners(connection, windows);
    std::vector<PopUp> popUps;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        processes[i].read(connection);
        machines[i].read(connection);
        if (owners.read(i, processes[i], machines[i]) == pid) popUps.push_back(shown[i]);
    }
    return popUps;
}

}  // namespace quil::linux_platform
