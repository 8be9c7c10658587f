#include "platform/linux/x11/windows/window_manager.h"

#include <algorithm>
#include <iterator>

#include "platform/linux/x11/properties.h"

namespace quil::linux_platform {
namespace {

/// What window managers with a workspace per monitor call themselves ("_NET_WM_NAME" of the window
/// that vouches for them). "LG3D" is what some are configured to say for the sake of old Java
/// programs.
constexpr std::string_view kWorkspacePerMonitor[] = {"awesome", "bspwm", "herbstluftwm", "i3",
                                                     "LG3D",    "qtile", "spectrwm",     "xmonad"};

/// The window that vouches for the window manager: the root names it, and it names itself.
std::optional<xcb_window_t> supportingWindow(X11Connection& connection) {
    constexpr std::string_view kCheck = "_NET_SUPPORTING_WM_CHECK";
    const auto named = readProperty(connection, connection.root(), kCheck).number();
    if (!named || readProperty(connection, *named, kCheck).number() != named) return {};
    return named;
}

bool hasWorkspacePerMonitor(X11Connection& connection) {
    const auto supporting = supportingWindow(connection);
    if (!supporting) return false;
    const auto name = readProperty(connection, *supporting, "_NET_WM_NAME").text();
    return name && std::find(std::begin(kWorkspacePerMonitor), std::end(kWorkspacePerMonitor),
                             *name) != std::end(kWorkspacePerMonitor);
}

}  // namespace

std::optional<WindowManager> readWindowManager(X11Connection& connection) {
    PropertyRequest stacking(connection, connection.root(), "_NET_CLIENT_LIST_STACKING");
    PropertyRequest active(connection, connection.root(), "_NET_ACTIVE_WINDOW");
    const bool isRunning = supportingWindow(connection).has_value();
    stacking.read(connection);
    active.read(connection);
    if (!isRunning) return {};
    WindowManager manager;
    if (stacking.exists()) manager.stacking = stacking.numbers();
    manager.active = active.number().value_or(XCB_WINDOW_NONE);
    return manager;
}

Workspaces readWorkspaces(X11Connection& connection) {
    const auto geometryCookie = xcb_get_geometry(connection.get(), connection.root());
    Workspaces workspaces;
    workspaces.current =
        readProperty(connection, connection.root(), "_NET_CURRENT_DESKTOP").number();
    workspaces.severalAreShown = workspaces.current && hasWorkspacePerMonitor(connection);
    // Not from the connection's setup: the screen may have been resized since.
    if (const auto root = connection.reply(xcb_get_geometry_reply, geometryCookie)) {
        workspaces.screen = {0, 0, static_cast<double>(root->width),
                             static_cast<double>(root->height)};
    }
    return workspaces;
}

}  // namespace quil::linux_platform
