#include "platform/linux/accessibility/application_lookup.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <thread>

#include "platform/linux/processes.h"

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;

/// How long after its start, or after it was woken, a process may still join the bus.
constexpr milliseconds kJoiningTime{1500};
constexpr milliseconds kPause{20};

/// Libraries of the toolkits that join it; processes without them never do.
constexpr std::string_view kToolkits[] = {"/libatk-bridge-2.0.", "/libgtk-4.", "/libQt5Gui.",
                                          "/libQt6Gui."};

bool usesToolkit(std::int32_t pid) {
    std::ifstream maps("/proc/" + std::to_string(pid) + "/maps");
    for (std::string line; std::getline(maps, line);) {
        for (const std::string_view library : kToolkits) {
            if (line.find(library) != std::string::npos) return true;
        }
    }
    return false;
}

milliseconds ageOf(std::uint64_t startTime) {
    const auto sinceBoot = std::chrono::steady_clock::now().time_since_epoch();
    const auto start =
        milliseconds(startTime * 1000 / static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK)));
    return std::chrono::duration_cast<milliseconds>(sinceBoot) - start;
}

}  // namespace

std::vector<std::string> busNamesOf(AccessibilityBus& bus, std::int32_t pid) {
    std::vector<std::string> names;
    for (auto& program : bus.registeredPrograms()) {
        if (program.pid == pid) names.push_back(std::move(program.busName));
    }
    return names;
}

std::vector<std::string> ApplicationLookup::busNamesOf(std::int32_t pid) {
    auto names = linux_platform::busNamesOf(bus_, pid);
    const auto startTime = names.empty() ? startTimeOf(pid) : std::nullopt;
    if (!startTime || givenUp_.contains({pid, *startTime})) return names;
    const auto now = BusClock::now();
    const auto end = std::max(now - ageOf(*startTime), bus_.connectedSince()) + kJoiningTime;
    if (now < end && usesToolkit(pid)) {
        while (names.empty() && BusClock::now() < end) {
            std::this_thread::sleep_for(kPause);
            names = linux_platform::busNamesOf(bus_, pid);
        }
    }
    if (names.empty() && BusClock::now() >= end) givenUp_.insert({pid, *startTime});
    return names;
}

}  // namespace quil::linux_platform
