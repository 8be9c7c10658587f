#include "platform/linux/linux_workspace.h"

#include <algorithm>

namespace quil::linux_platform {
namespace {

std::optional<std::string> nonEmpty(std::string text) {
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

}  // namespace

std::optional<RunningApplication> LinuxWorkspace::applicationOf(const X11Window& window) {
    if (!window.pid) return {};
    RunningApplication application;
    application.processIdentifier = *window.pid;
    application.executablePath = executableOf(*window.pid);
    const auto entry = entries_.find({.pid = *window.pid,
                                      .gtkApplicationId = window.gtkApplicationId,
                                      .className = window.className,
                                      .instanceName = window.instanceName});
    if (entry) {
        application.bundleIdentifier = entry->id;
        application.localizedName = nonEmpty(entry->localizedName);
    }
    if (!application.localizedName) application.localizedName = nonEmpty(window.className);
    if (!application.localizedName) application.localizedName = nonEmpty(processName(*window.pid));
    return application;
}

std::optional<RunningApplication> LinuxWorkspace::frontmostApplication() {
    const auto connection = display_.connection();
    if (!connection) return {};
    const auto active = activeWindow(*connection);
    if (!active) return {};
    const auto windows = describeWindows(*connection, {*active});
    return windows.empty() ? std::nullopt : applicationOf(windows.front());
}

std::optional<RunningApplication> LinuxWorkspace::runningApplicationWithProcessIdentifier(
    std::int32_t pid) {
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
        const bool known =
            std::any_of(applications.begin(), applications.end(),
                        [&](const auto& entry) { return entry.processIdentifier == window.pid; });
        if (known || window.layer != 0) continue;
        if (auto application = applicationOf(window)) applications.push_back(*application);
    }
    return applications;
}

std::optional<std::string> LinuxWorkspace::urlForApplicationWithBundleIdentifier(
    std::string_view bundleIdentifier) {
    return desktopFileOf(std::string(bundleIdentifier));
}

bool LinuxWorkspace::openUrl(std::string_view) {
    return false;
}

std::optional<Value> LinuxWindowList::copyWindowInfo(std::uint32_t options, std::uint32_t) {
    const auto connection = display_.connection();
    if (!connection) return {};
    Value::List list;
    for (const X11Window& window : topLevelWindows(*connection)) {
        if ((options & kWindowListOptionOnScreenOnly) && !window.onScreen) continue;
        if ((options & kWindowListExcludeDesktopElements) && window.isDesktopElement) continue;
        Value::Dictionary info{
            {std::string(kWindowLayer), window.layer},
            {std::string(kWindowNumber), static_cast<std::int64_t>(window.id)},
            {std::string(kWindowBounds), Value::Dictionary{{"X", window.frame.x},
                                                           {"Y", window.frame.y},
                                                           {"Width", window.frame.width},
                                                           {"Height", window.frame.height}}}};
        if (window.title) info.emplace(kWindowName, *window.title);
        if (window.pid) info.emplace(kWindowOwnerPid, *window.pid);
        const auto application = workspace_.applicationOf(window);
        if (application && application->localizedName) {
            info.emplace(kWindowOwnerName, *application->localizedName);
        } else if (!window.className.empty()) {
            info.emplace(kWindowOwnerName, window.className);
        }
        list.emplace_back(std::move(info));
    }
    return Value(std::move(list));
}

}  // namespace quil::linux_platform
