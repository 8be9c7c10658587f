#include "platform/linux/x11/windows/click_focus.h"

#include <xcb/randr.h>

#include <algorithm>
#include <cmath>
#include <string_view>

#include "platform/linux/x11/windows/window_activation.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

/// Toolkits and window managers nest windows.
constexpr int kMaximumLevels = 32;

/// Whether the server's extension has that name; the library knows none of it.
bool hasExtensionNamed(X11Connection& connection, std::string_view name) {
    const auto reply =
        connection.reply(xcb_query_extension_reply,
                         xcb_query_extension(connection.get(),
                                             static_cast<std::uint16_t>(name.size()), name.data()));
    return reply && reply->present;
}

/// Since 23.1 Xwayland says what it is; before, it gave its outputs names of its own.
bool isXwayland(X11Connection& connection) {
    if (hasExtensionNamed(connection, "XWAYLAND")) return true;
    if (!connection.hasExtension(xcb_randr_id)) return false;
    const auto monitors =
        connection.reply(xcb_randr_get_monitors_reply,
                         xcb_randr_get_monitors(connection.get(), connection.root(), 1));
    if (!monitors || monitors->nMonitors == 0) return false;
    const auto first = xcb_randr_get_monitors_monitors_iterator(monitors.get());
    const auto name = connection.reply(xcb_get_atom_name_reply,
                                       xcb_get_atom_name(connection.get(), first.data->name));
    if (!name) return false;
    const std::string_view text(
        xcb_get_atom_name_name(name.get()),
        static_cast<std::size_t>(xcb_get_atom_name_name_length(name.get())));
    return text.starts_with("XWAYLAND");
}

std::optional<X11Window> topLevelWindowAt(X11Connection& connection, Point point) {
    const auto windows = topLevelWindows(connection);
    const auto x = static_cast<std::int16_t>(std::floor(point.x));
    const auto y = static_cast<std::int16_t>(std::floor(point.y));
    xcb_window_t window = connection.root();
    for (int i = 0; i < kMaximumLevels; ++i) {
        const auto inside = connection.reply(
            xcb_translate_coordinates_reply,
            xcb_translate_coordinates(connection.get(), connection.root(), window, x, y));
        if (!inside || inside->child == XCB_WINDOW_NONE) break;
        window = inside->child;
        const auto found = std::ranges::find(windows, window, &X11Window::id);
        if (found != windows.end()) return *found;
    }
    return {};
}

}  // namespace

void focusClickedWindow(X11Connection& connection, Point point) {
    if (!isXwayland(connection)) return;
    const auto clicked = topLevelWindowAt(connection, point);
    if (!clicked) return;
    const auto active = windowInFront(connection);
    if (!active || active->id != clicked->id) bringToFront(connection, clicked->id);
}

}  // namespace quil::linux_platform
