#include "platform/linux/window_list.h"

#include <algorithm>

#include "platform/linux/x11/windows/window_activation.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

Value::Dictionary informationOf(const X11Window& window) {
    Value::Dictionary information{
        {std::string(kWindowLayer), window.layer},
        {std::string(kWindowNumber), static_cast<std::int64_t>(window.id)},
        {std::string(kWindowBounds), Value::Dictionary{{"X", window.frame.x},
                                                       {"Y", window.frame.y},
                                                       {"Width", window.frame.width},
                                                       {"Height", window.frame.height}}}};
    if (window.title) information.emplace(kWindowName, *window.title);
    if (window.pid) information.emplace(kWindowOwnerPid, *window.pid);
    return information;
}

}  // namespace

std::optional<Value> LinuxWindowList::copyWindowInfo(std::uint32_t options, std::uint32_t) {
    const auto connection = display_.connection();
    if (!connection) return {};
    const auto windows = topLevelWindows(*connection);
    const auto owners = workspace_.ownersOf(windows);
    Value::List list;
    for (const X11Window& window : windows) {
        if ((options & kWindowListOptionOnScreenOnly) && !window.onScreen) continue;
        if ((options & kWindowListExcludeDesktopElements) && window.isDesktopElement) continue;
        Value::Dictionary information = informationOf(window);
        const auto owner = owners.find(window.pid.value_or(0));
        if (owner != owners.end() && owner->second.localizedName) {
            information.emplace(kWindowOwnerName, *owner->second.localizedName);
        } else if (!window.className.empty()) {
            information.emplace(kWindowOwnerName, window.className);
        }
        list.emplace_back(std::move(information));
    }
    return Value(std::move(list));
}

bool LinuxWindowList::activateWindow(std::int64_t number) {
    const auto connection = display_.connection();
    if (!connection) return false;
    const auto windows = topLevelWindows(*connection);
    const auto found = std::ranges::find(windows, number, &X11Window::id);
    if (found == windows.end()) return false;
    bringToFront(*connection, found->id);
    return true;
}

std::optional<std::int64_t> LinuxWindowList::activeWindow() {
    const auto connection = display_.connection();
    const auto window = connection ? windowInFront(*connection) : std::optional<X11Window>();
    return window ? std::optional<std::int64_t>(window->id) : std::nullopt;
}

}  // namespace quil::linux_platform
