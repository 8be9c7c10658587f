#include "platform/linux/workspace.h"

#include <unistd.h>

#include <algorithm>
#include <set>

#include "platform/linux/applications/application_launch.h"
#include "platform/linux/applications/desktop_entries.h"
#include "platform/linux/x11/server_time.h"
#include "platform/linux/x11/windows/window_owners.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

/// Dialogs of dialogs are followed so far.
constexpr int kMaximumOwners = 8;

ApplicationHints hintsOf(const X11Window& window) {
    return {.pid = window.pid.value_or(0),
            .desktopFile = window.desktopFile,
            .gtkApplicationId = window.gtkApplicationId,
            .instanceName = window.instanceName,
            .className = window.className};
}

bool isBasedOn(Evidence evidence, const std::optional<MatchedEntry>& entry) {
    return entry && entry->evidence >= evidence;
}

/// An id for a launch that the user asks for now (Startup Notification Protocol): an application
/// that gets it may come to the front, before what the user did earlier.
std::string startupIdOf(X11Connection& connection, unsigned launch) {
    const auto time = readServerTime(connection);
    return time ? "quil-" + std::to_string(getpid()) + '-' + std::to_string(launch) + "_TIME" +
                      std::to_string(*time)
                : "";
}

/// The window by which its process is known.
const X11Window& topmost(const std::vector<const X11Window*>& windows,
                         const std::optional<X11Window>& active) {
    const auto find = [&](auto isWanted) {
        const auto found = std::ranges::find_if(windows, isWanted);
        return found == windows.end() ? nullptr : *found;
    };
    const auto* window = find([&](const X11Window* w) { return active && w->id == active->id; });
    if (!window) window = find([](const X11Window* w) { return w->layer == 0; });
    return window ? *window : *windows.front();
}

}  // namespace

std::optional<MatchedEntry> LinuxWorkspace::entryOf(X11Connection& connection,
                                                    const X11Window& window) {
    if (!window.pid) return {};
    std::optional<std::set<std::int32_t>> onDisplay;
    return identities_.entryOf(hintsOf(window), [&](std::int32_t pid) {
        if (!onDisplay) onDisplay = processesOnDisplay(connection);
        return onDisplay->contains(pid);
    });
}

std::optional<MatchedEntry> LinuxWorkspace::entryOfOwner(X11Connection& connection,
                                                         const X11Window& window) {
    xcb_window_t owner = window.transientFor;
    for (int i = 0; owner != XCB_WINDOW_NONE && i < kMaximumOwners; ++i) {
        const auto described = describeWindows(connection, {owner});
        if (described.empty()) return {};
        auto entry = entryOf(connection, described.front());
        // What a process runs says nothing of another process, nor more than the window has said.
        if (isBasedOn(Evidence::similarName, entry)) return entry;
        owner = described.front().transientFor;
    }
    return {};
}

std::optional<MatchedEntry> LinuxWorkspace::entryOfOthers(X11Connection& connection,
                                                          const X11Window& window,
                                                          const Windows& all) {
    for (const X11Window& other : all) {
        if (other.pid != window.pid) continue;
        auto entry = entryOf(connection, other);
        if (isBasedOn(Evidence::similarName, entry)) return entry;
    }
    return {};
}

std::optional<RunningApplication> LinuxWorkspace::applicationOf(X11Connection& connection,
                                                                const X11Window& window,
                                                                const Windows* all) {
    if (!window.pid) return {};
    auto entry = entryOf(connection, window);
    if (!isBasedOn(Evidence::similarName, entry)) {
        auto other = entryOfOwner(connection, window);
        if (!other) {
            other = entryOfOthers(connection, window, all ? *all : topLevelWindows(connection));
        }
        if (other) entry = std::move(other);
    }
    return identities_.identify(hintsOf(window), entry);
}

void LinuxWorkspace::followLaunch(X11Connection& connection) {
    if (!launch_) return;
    const auto isLaunched = [&](const X11Window& window) {
        const auto application = applicationOf(connection, window, nullptr);
        const auto id = application ? application->bundleIdentifier : std::nullopt;
        return id && (*id == launch_->entryPath() || findDesktopEntry(*id) == launch_->entryPath());
    };
    if (launch_->follow(connection, isLaunched)) launch_.reset();
}

std::optional<RunningApplication> LinuxWorkspace::frontmostApplication() {
    effects_.settle();
    const auto connection = display_.connection();
    if (!connection) return {};
    followLaunch(*connection);
    const auto active = activeWindow(*connection);
    return active ? applicationOf(*connection, *active, nullptr) : std::nullopt;
}

std::optional<RunningApplication> LinuxWorkspace::runningApplicationWithProcessIdentifier(
    std::int32_t pid) {
    if (auto known = identities_.identified(pid)) return known;
    const auto connection = display_.connection();
    if (!connection) return {};
    auto owners = ownersOf(topLevelWindows(*connection));
    const auto owner = owners.find(pid);
    return owner == owners.end() ? std::nullopt : std::optional(std::move(owner->second));
}

std::vector<RunningApplication> LinuxWorkspace::runningApplications() {
    const auto connection = display_.connection();
    if (!connection) return {};
    const Windows windows = topLevelWindows(*connection);
    auto owners = ownersOf(windows);
    std::vector<RunningApplication> applications;
    for (const X11Window& window : windows) {
        const auto owner = owners.find(window.pid.value_or(0));
        if (window.layer != 0 || owner == owners.end()) continue;
        applications.push_back(std::move(owner->second));
        owners.erase(owner);
    }
    return applications;
}

std::map<std::int32_t, RunningApplication> LinuxWorkspace::ownersOf(const Windows& windows) {
    const auto connection = display_.connection();
    if (!connection) return {};
    std::map<std::int32_t, std::vector<const X11Window*>> windowsByProcess;
    for (const X11Window& window : windows) {
        if (window.pid) windowsByProcess[*window.pid].push_back(&window);
    }
    const auto active = activeWindow(*connection);
    std::map<std::int32_t, RunningApplication> owners;
    for (const auto& [pid, its] : windowsByProcess) {
        auto owner = applicationOf(*connection, topmost(its, active), &windows);
        if (owner) owners.emplace(pid, std::move(*owner));
    }
    return owners;
}

std::optional<std::string> LinuxWorkspace::urlForApplicationWithBundleIdentifier(
    std::string_view bundleIdentifier) {
    return findDesktopEntry(bundleIdentifier);
}

bool LinuxWorkspace::openUrl(std::string_view path) {
    const auto connection = display_.connection();
    if (!connection) return openDesktopEntry(path, "");
    launch_.emplace(*connection, path);
    const bool isOpened = openDesktopEntry(path, startupIdOf(*connection, ++launches_));
    if (!isOpened) launch_.reset();
    return isOpened;
}

}  // namespace quil::linux_platform
