#include "platform/linux/x11/input/xim_processes.h"

#include <string>
#include <string_view>

#include "platform/linux/applications/processes.h"
#include "platform/linux/x11/input/key_relay.h"
#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/windows/window_owners.h"

namespace quil::linux_platform {
namespace {

/// The value of "@im=" among the modifiers, each of which begins with "@".
std::string methodOf(std::int32_t pid) {
    constexpr std::string_view kMethod = "@im=";
    const std::string modifiers = environmentVariableOf(pid, "XMODIFIERS");
    const std::size_t begin = modifiers.find(kMethod);
    if (begin == modifiers.npos) return {};
    const std::string value = modifiers.substr(begin + kMethod.size());
    return value.substr(0, value.find('@'));
}

}  // namespace

std::vector<std::int32_t> ximProcesses(X11Connection& connection, std::int32_t pid) {
    const std::string method = methodOf(pid);
    if (method.empty()) return {};
    const auto owner = connection.reply(
        xcb_get_selection_owner_reply,
        xcb_get_selection_owner(connection.get(), connection.atom("@server=" + method)));
    if (!owner || owner->owner == XCB_WINDOW_NONE) return {};
    const xcb_window_t window = owner->owner;
    WindowOwners owners(connection, {window});
    const auto process = owners.read(0, readProperty(connection, window, "_NET_WM_PID"),
                                     readProperty(connection, window, "WM_CLIENT_MACHINE"));
    if (!process) return {};
    std::vector<std::int32_t> processes{*process};
    if (method == "ibus") {
        const auto others = ibusProcesses();
        processes.insert(processes.end(), others.begin(), others.end());
    }
    return processes;
}

}  // namespace quil::linux_platform
