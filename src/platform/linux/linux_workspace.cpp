#include "platform/linux/linux_workspace.h"

#include <algorithm>

#include "platform/linux/applications/application_launch.h"
#include "platform/linux/applications/desktop_entries.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {

std::optional<RunningApplication> LinuxWorkspace::applicationOf(const X11Window& window) {
    if (!window.pid) return {};
    return identities_.identify({.pid = *window.pid,
                                 .desktopFile = window.desktopFile,
                                 .gtkApplicationId = window.gtkApplicationId,
                                 .instanceName = window.instanceName,
                                 .className = window.className});
}

std::optional<RunningApplication> LinuxWorkspace::frontmostApplication() {
    effects_.settle();
    const auto connection = display_.connection();
    if (!connection) return {};
    const auto active = activeWindow(*connection);
    return active ? applicationOf(*active) : std::nullopt;
}

std::optional<RunningApplication> LinuxWorkspace::runningApplicationWithProcessIdentifier(
    std::int32_t pid) {
    if (auto known = identities_.identified(pid)) return known;
    const auto connection = display_.connection();
    if (!connection) return {};
    for (const X11Window& window : topLevelWindows(*connection)) {
        if (window.pid == pid) return applicationOf(window);
    }
    return {};
}

std::vector<RunningApplication> LinuxWorkspace::runningApplications() {
    const auto connection = display_.connection();
    if (!connection) return {};
    std::vector<RunningApplication> applications;
    for (const X11Window& window : topLevelWindows(*connection)) {
        const bool isListed =
            std::any_of(applications.begin(), applications.end(),
                        [&](const auto& entry) { return entry.processIdentifier == window.pid; });
        if (isListed || window.layer != 0) continue;
        if (auto application = applicationOf(window)) {
            applications.push_back(std::move(*application));
        }
    }
    return applications;
}

std::map<std::int32_t, RunningApplication> LinuxWorkspace::ownersOf(
    const std::vector<X11Window>& windows) {
    std::map<std::int32_t, RunningApplication> owners;
    for (const X11Window& window : windows) {
        if (!window.pid || owners.contains(*window.pid)) continue;
        if (auto owner = applicationOf(window)) owners.emplace(*window.pid, std::move(*owner));
    }
    return owners;
}

std::optional<std::string> LinuxWorkspace::urlForApplicationWithBundleIdentifier(
    std::string_view bundleIdentifier) {
    return findDesktopEntry(bundleIdentifier);
}

bool LinuxWorkspace::openUrl(std::string_view path) {
    return openDesktopEntry(path);
}

}  // namespace quil::linux_platform
