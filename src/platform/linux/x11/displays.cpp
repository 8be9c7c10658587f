#include "platform/linux/x11/displays.h"

#include <xcb/randr.h>

#include <algorithm>

#include "text/characters.h"

namespace quil::linux_platform {
namespace {

constexpr std::int32_t kFailure = 1000;  // kCGErrorFailure, CGError.h
constexpr std::uint32_t kWholeScreen = 1;

bool hasMonitors(X11Connection& connection) {
    if (!connection.hasExtension(xcb_randr_id)) return false;
    const auto version = connection.reply(xcb_randr_query_version_reply,
                                          xcb_randr_query_version(connection.get(), 1, 5));
    return version && (version->major_version > 1 ||
                       (version->major_version == 1 && version->minor_version >= 5));
}

Rect wholeScreen(X11Connection& connection) {
    // The root window and not the connection's setup: the screen may have been resized since.
    const auto geometry = connection.reply(xcb_get_geometry_reply,
                                           xcb_get_geometry(connection.get(), connection.root()));
    if (!geometry) return {};
    return {0, 0, static_cast<double>(geometry->width), static_cast<double>(geometry->height)};
}

}  // namespace

std::vector<X11Displays::Monitor> X11Displays::monitors() {
    const auto connection = display_.connection();
    if (!connection) return {};
    std::vector<Monitor> monitors;
    if (hasMonitors(*connection)) {
        const auto answer =
            connection->reply(xcb_randr_get_monitors_reply,
                              xcb_randr_get_monitors(connection->get(), connection->root(), 1));
        if (!answer) return {};
        for (auto entry = xcb_randr_get_monitors_monitors_iterator(answer.get()); entry.rem > 0;
             xcb_randr_monitor_info_next(&entry)) {
            const xcb_randr_monitor_info_t& info = *entry.data;
            const Monitor monitor{
                info.name,
                {static_cast<double>(info.x), static_cast<double>(info.y),
                 static_cast<double>(info.width), static_cast<double>(info.height)},
                validUtf8(connection->atomName(info.name))};
            monitors.insert(info.primary ? monitors.begin() : monitors.end(), monitor);
        }
    }
    if (monitors.empty()) monitors.push_back({kWholeScreen, wholeScreen(*connection), {}});
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
        if (monitor.name) screens.push_back({monitor.id, *monitor.name});
    }
    return screens;
}

}  // namespace quil::linux_platform
