#include "platform/linux/accessibility/application_lookup.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <thread>

#include "platform/linux/accessibility/application_windows.h"
#include "platform/linux/applications/processes.h"
#include "platform/linux/atspi/messages.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;

/// How long after its start, or after it was woken, a process may still join the bus.
constexpr milliseconds kJoiningTime{1500};
constexpr milliseconds kPause{20};

/// When a process joins the bus: by the libraries of its toolkits.
enum class Joining { never, atStart, whenWoken };

Joining joiningOf(std::int32_t pid) {
    Joining joining = Joining::never;
    hasMappedFile(pid, [&](std::string_view path) {
        const auto has = [&](std::string_view part) { return path.find(part) != path.npos; };
        if (has("/libatk-bridge-2.0.") || has("/libgtk-4.") || has("/libQt5Gui.")) {
            joining = Joining::whenWoken;
        } else if (has("/libQt6Gui.") && joining == Joining::never) {
            joining = Joining::atStart;
        }
        return joining == Joining::whenWoken;
    });
    return joining;
}

milliseconds ageOf(std::uint64_t startTime) {
    const auto sinceBoot = std::chrono::steady_clock::now().time_since_epoch();
    const auto start =
        milliseconds(startTime * 1000 / static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK)));
    return std::chrono::duration_cast<milliseconds>(sinceBoot) - start;
}

/// Whether two processes may be of one application.
bool areRelated(std::int32_t a, std::int32_t b) {
    const std::string sandbox = flatpakIdOf(a);
    return (!sandbox.empty() && sandbox == flatpakIdOf(b)) || isDescendantOf(b, a) ||
           isDescendantOf(a, b);
}

}  // namespace

std::vector<std::string> busNamesOf(AccessibilityBus& bus, std::int32_t pid) {
    std::vector<std::string> names;
    for (auto& program : bus.registeredPrograms()) {
        if (program.pid == pid) names.push_back(std::move(program.busName));
    }
    return names;
}

std::vector<std::string> ApplicationLookup::relativesOf(std::int32_t pid) {
    auto programs = bus_.registeredPrograms();
    std::erase_if(programs, [&](const auto& program) {
        return !program.pid || !areRelated(pid, *program.pid);
    });
    const auto connection = programs.empty() ? nullptr : display_.connection();
    if (!connection) return {};
    auto onScreen = topLevelWindows(*connection);
    std::erase_if(onScreen, [&](const X11Window& window) { return window.pid != pid; });
    std::vector<std::string> names;
    names.reserve(programs.size());
    for (auto& program : programs) names.push_back(std::move(program.busName));
    for (const ApplicationWindow& window : applicationWindows(bus_, names)) {
        const bool isShown =
            std::any_of(onScreen.begin(), onScreen.end(), [&](const X11Window& other) {
                return window.hasTitleOf(other) && window.hasSizeOf(other);
            });
        if (isShown) return {window.reference.busName};
    }
    return {};
}

std::vector<std::string> ApplicationLookup::busNamesOf(std::int32_t pid) {
    auto names = linux_platform::busNamesOf(bus_, pid);
    if (names.empty()) names = relativesOf(pid);
    const auto startTime = names.empty() ? startTimeOf(pid) : std::nullopt;
    if (!startTime || unreachable_.contains({pid, *startTime})) return names;
    const Joining joining = joiningOf(pid);
    const auto now = BusClock::now();
    auto end = now - ageOf(*startTime) + kJoiningTime;
    if (joining == Joining::whenWoken) end = std::max(end, bus_.connectedSince() + kJoiningTime);
    if (joining != Joining::never) {
        while (names.empty() && BusClock::now() < end) {
            std::this_thread::sleep_for(kPause);
            names = linux_platform::busNamesOf(bus_, pid);
        }
    }
    if (names.empty() && BusClock::now() >= end) unreachable_.insert({pid, *startTime});
    return names;
}

bool ApplicationLookup::isUnreachable(std::int32_t pid) {
    const auto startTime = startTimeOf(pid);
    return startTime && unreachable_.contains({pid, *startTime}) &&
           !bus_.bus().peer(atspi::kRegistry).hangs();
}

}  // namespace quil::linux_platform
