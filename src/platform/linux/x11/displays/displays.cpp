#include "platform/linux/x11/displays/displays.h"

#include <xcb/randr.h>

#include <algorithm>

#include "text/characters.h"

namespace quil::linux_platform {
namespace {

constexpr std::int32_t kFailure = 1000;  // kCGErrorFailure, CGError.h
constexpr std::uint32_t kWholeScreen = 1;

Rect wholeScreen(X11Connection& connection) {
    // The root window and not the connection's setup: the screen may have been resized since.
    const auto geometry = connection.reply(xcb_get_geometry_reply,
                                           xcb_get_geometry(connection.get(), connection.root()));
    if (!geometry) return {};
    return {0, 0, static_cast<double>(geometry->width), static_cast<double>(geometry->height)};
}

/// Null when the server cannot say.
XcbPointer<xcb_randr_get_monitors_reply_t> askForMonitors(X11Connection& connection) {
    if (!connection.hasExtension(xcb_randr_id)) return nullptr;
    // The server behaves as the version that it has announced to the client.
    const auto versionCookie = xcb_randr_query_version(connection.get(), 1, 5);
    const auto monitorsCookie = xcb_randr_get_monitors(connection.get(), connection.root(), 1);
    const auto version = connection.reply(xcb_randr_query_version_reply, versionCookie);
    auto monitors = connection.reply(xcb_randr_get_monitors_reply, monitorsCookie);
    const bool isKnown = version && (version->major_version > 1 || version->minor_version >= 5);
    return isKnown ? std::move(monitors) : nullptr;
}

std::string nameFrom(const xcb_get_atom_name_reply_t* reply) {
    if (!reply) return {};
    return validUtf8({xcb_get_atom_name_name(reply),
                      static_cast<std::size_t>(xcb_get_atom_name_name_length(reply))});
}

}  // namespace

std::vector<X11Displays::Monitor> X11Displays::monitors() {
    const auto connection = display_.connection();
    if (!connection) return {};
    std::vector<Monitor> monitors;
    std::vector<xcb_get_atom_name_cookie_t> nameCookies;
    if (const auto reply = askForMonitors(*connection)) {
        for (auto entry = xcb_randr_get_monitors_monitors_iterator(reply.get()); entry.rem > 0;
             xcb_randr_monitor_info_next(&entry)) {
            const xcb_randr_monitor_info_t& info = *entry.data;
            if (info.width == 0 || info.height == 0) continue;
            monitors.push_back(
                {.id = info.name,
                 .isPrimary = info.primary != 0,
                 .bounds = {static_cast<double>(info.x), static_cast<double>(info.y),
                            static_cast<double>(info.width), static_cast<double>(info.height)},
                 .name = {}});
            nameCookies.push_back(xcb_get_atom_name(connection->get(), info.name));
        }
    }
    for (std::size_t i = 0; i < monitors.size(); ++i) {
        monitors[i].name =
            nameFrom(connection->reply(xcb_get_atom_name_reply, nameCookies[i]).get());
    }
    std::stable_partition(monitors.begin(), monitors.end(),
                          [](const Monitor& monitor) { return monitor.isPrimary; });
    if (monitors.empty() && connection->isAlive()) {
        monitors.push_back({.id = kWholeScreen, .bounds = wholeScreen(*connection), .name = {}});
    }
    return monitors;
}

std::int32_t X11Displays::getActiveDisplayList(std::uint32_t capacity, std::uint32_t* ids,
                                               std::uint32_t* count) {
    const auto all = monitors();
    if (all.empty()) return kFailure;
    const auto available = static_cast<std::uint32_t>(all.size());
    *count = capacity == 0 ? available : std::min(capacity, available);
    if (capacity == 0) return 0;
    for (std::uint32_t i = 0; i < *count; ++i) ids[i] = all[i].id;
    return 0;
}

Rect X11Displays::displayBounds(std::uint32_t display) {
    for (const Monitor& monitor : monitors()) {
        if (monitor.id == display) return monitor.bounds;
    }
    return {};
}

std::uint32_t X11Displays::mainDisplayId() {
    const auto all = monitors();
    return all.empty() ? 0 : all.front().id;
}

std::vector<Screen> X11Displays::screens() {
    std::vector<Screen> screens;
    for (const Monitor& monitor : monitors()) {
        if (!monitor.name.empty()) screens.push_back({monitor.id, monitor.name});
    }
    return screens;
}

}  // namespace quil::linux_platform
