#include "platform/linux/x11/windows/windows.h"

#include <array>

#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/windows/window_layers.h"
#include "platform/linux/x11/windows/window_manager.h"
#include "platform/linux/x11/windows/window_owners.h"

namespace quil::linux_platform {
namespace {

constexpr std::uint32_t kIconicState = 3;  // IconicState of WM_STATE, ICCCM 4.1.3.1

/// Everything asked about one window, sent at once.
struct WindowRequests {
    enum Property {
        netName,
        name,
        type,
        netState,
        state,
        workspace,
        extents,
        pid,
        machine,
        wmClass,
        gtkApplicationId,
        kdeDesktopFile,
        bamfDesktopFile,
        transientFor,
    };

    WindowRequests(X11Connection& c, xcb_window_t w)
        : window(w),
          attributes(xcb_get_window_attributes(c.get(), w)),
          geometry(xcb_get_geometry(c.get(), w)),
          origin(xcb_translate_coordinates(c.get(), w, c.root(), 0, 0)),
          properties{{{c, w, "_NET_WM_NAME"},
                      {c, w, "WM_NAME"},
                      {c, w, "_NET_WM_WINDOW_TYPE"},
                      {c, w, "_NET_WM_STATE"},
                      {c, w, "WM_STATE"},
                      {c, w, "_NET_WM_DESKTOP"},
                      {c, w, "_GTK_FRAME_EXTENTS"},
                      {c, w, "_NET_WM_PID"},
                      {c, w, "WM_CLIENT_MACHINE"},
                      {c, w, "WM_CLASS"},
                      {c, w, "_GTK_APPLICATION_ID"},
                      {c, w, "_KDE_NET_WM_DESKTOP_FILE"},
                      {c, w, "_BAMF_DESKTOP_FILE"},
                      {c, w, "WM_TRANSIENT_FOR"}}} {}

    const PropertyRequest& operator[](Property property) const { return properties[property]; }

    xcb_window_t window;
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    xcb_translate_coordinates_cookie_t origin;
    std::array<PropertyRequest, transientFor + 1> properties;
};

X11Window::Extents extentsFrom(const std::vector<std::uint32_t>& numbers, double width,
                               double height) {
    if (numbers.size() != 4) return {};
    const X11Window::Extents extents{
        static_cast<double>(numbers[0]), static_cast<double>(numbers[1]),
        static_cast<double>(numbers[2]), static_cast<double>(numbers[3])};
    const bool isPlausible =
        extents.left + extents.right < width && extents.top + extents.bottom < height;
    return isPlausible ? extents : X11Window::Extents{};
}

bool intersects(const Rect& a, const Rect& b) {
    return a.minX() < b.maxX() && b.minX() < a.maxX() && a.minY() < b.maxY() && b.minY() < a.maxY();
}

bool isMinimised(X11Connection& connection, const WindowRequests& requests) {
    return requests[WindowRequests::netState].contains(connection.atom("_NET_WM_STATE_HIDDEN")) ||
           requests[WindowRequests::state].number() == kIconicState;
}

/// Some window managers keep the windows of other workspaces mapped, so that they can show small
/// pictures of them.
bool isOnShownWorkspace(const WindowRequests& requests, const Workspaces& workspaces) {
    const auto workspace = requests[WindowRequests::workspace].number();
    return !workspace || !workspaces.current || *workspace == *workspaces.current ||
           *workspace == kAllWorkspaces || workspaces.severalAreShown;
}

/// The name of the window's desktop entry, however it is said.
std::string desktopFileOf(const WindowRequests& requests) {
    const auto kde = requests[WindowRequests::kdeDesktopFile].text();
    return kde && !kde->empty() ? *kde
                                : requests[WindowRequests::bamfDesktopFile].text().value_or("");
}

std::optional<X11Window> describe(X11Connection& connection, WindowRequests& requests,
                                  const Workspaces& workspaces) {
    const auto attributes = connection.reply(xcb_get_window_attributes_reply, requests.attributes);
    const auto geometry = connection.reply(xcb_get_geometry_reply, requests.geometry);
    const auto origin = connection.reply(xcb_translate_coordinates_reply, requests.origin);
    for (PropertyRequest& property : requests.properties) property.read(connection);
    if (!attributes || !geometry || !origin) return {};

    X11Window window;
    window.id = requests.window;
    window.title = requests[WindowRequests::netName].text();
    if (!window.title) window.title = requests[WindowRequests::name].text();

    const double width = geometry->width;
    const double height = geometry->height;
    window.shadows = extentsFrom(requests[WindowRequests::extents].numbers(), width, height);
    window.frame = {origin->dst_x + window.shadows.left, origin->dst_y + window.shadows.top,
                    width - window.shadows.left - window.shadows.right,
                    height - window.shadows.top - window.shadows.bottom};

    window.layer = windowLayer(connection, requests[WindowRequests::type].numbers());
    window.isDesktopElement = window.layer == kDesktopLayer;
    window.onScreen =
        attributes->map_state == XCB_MAP_STATE_VIEWABLE && !isMinimised(connection, requests) &&
        isOnShownWorkspace(requests, workspaces) && intersects(window.frame, workspaces.screen);
    window.demandsAttention = requests[WindowRequests::netState].contains(
        connection.atom("_NET_WM_STATE_DEMANDS_ATTENTION"));

    const auto& names = requests[WindowRequests::wmClass].texts();
    if (!names.empty()) window.instanceName = names[0];
    if (names.size() > 1) window.className = names[1];
    window.gtkApplicationId = requests[WindowRequests::gtkApplicationId].text().value_or("");
    window.desktopFile = desktopFileOf(requests);
    const auto owner = requests[WindowRequests::transientFor].number();
    if (owner != connection.root()) window.transientFor = owner.value_or(XCB_WINDOW_NONE);
    return window;
}

}  // namespace

std::vector<X11Window> describeWindows(X11Connection& connection,
                                       const std::vector<xcb_window_t>& windows) {
    if (windows.empty()) return {};
    const Workspaces workspaces = readWorkspaces(connection);
    std::vector<WindowRequests> requests;
    requests.reserve(windows.size());
    for (const xcb_window_t window : windows) requests.emplace_back(connection, window);
    WindowOwners owners(connection, windows);
    std::vector<X11Window> described;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        auto window = describe(connection, requests[i], workspaces);
        const auto pid =
            owners.read(i, requests[i][WindowRequests::pid], requests[i][WindowRequests::machine]);
        if (!window) continue;
        window->pid = pid;
        described.push_back(std::move(*window));
    }
    return described;
}

}  // namespace quil::linux_platform
