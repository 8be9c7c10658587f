#include "platform/linux/x11/input/key_relay.h"

#include <charconv>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <thread>

#include "platform/linux/applications/processes.h"

namespace quil::linux_platform {
namespace {

constexpr std::chrono::microseconds kRelayLookInterval{200};
/// Others need some milliseconds for a key, more on a busy machine.
constexpr std::chrono::milliseconds kBusyRelayTimeout{20};

/// What a program has loaded that sends keys elsewhere.
struct Modules {
    bool isGtk4 = false;
    bool hasIbus = false;
    bool hasFcitx = false;
    bool hasQt = false;
};

Modules modulesOf(std::int32_t pid) {
    Modules found;
    hasMappedFile(pid, [&](std::string_view path) {
        const auto has = [&](std::string_view part) { return path.find(part) != path.npos; };
        const bool isIbus = has("/im-ibus") || has("/libim-ibus") || has("/libibusplatforminput");
        found.hasIbus = found.hasIbus || isIbus;
        found.isGtk4 = found.isGtk4 || has("/libgtk-4.");
        found.hasFcitx = found.hasFcitx || has("/im-fcitx") || has("/libim-fcitx") ||
                         has("/libfcitx5platforminput") || has("/libfcitxplatforminput");
        found.hasQt = found.hasQt || has("/libQt5Gui.") || has("/libQt6Gui.");
        return false;
    });
    return found;
}

bool isIbus(std::string_view name) {
    return name == "ibus-daemon" || name.starts_with("ibus-engine");
}

bool isFcitx(std::string_view name) {
    return name == "fcitx" || name == "fcitx5";
}

/// Which tells assistive programs of keys. The kernel keeps 15 characters of a name.
bool isRegistry(std::string_view name) {
    return name == "at-spi2-registr";
}

bool isBus(std::string_view name) {
    return name == "dbus-daemon" || name == "dbus-broker";
}

std::vector<std::int32_t> processesNamed(const std::function<bool(std::string_view)>& isWanted) {
    std::vector<std::int32_t> processes;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        const std::string number = entry.path().filename();
        std::int32_t process = 0;
        const char* const end = number.data() + number.size();
        if (std::from_chars(number.data(), end, process).ptr != end) continue;
        if (isWanted(processName(process))) processes.push_back(process);
    }
    return processes;
}

}  // namespace

std::vector<std::int32_t> ibusProcesses() {
    return processesNamed(isIbus);
}

std::optional<KeyRelay> KeyRelay::find(std::int32_t pid) {
    const Modules modules = modulesOf(pid);
    if (!modules.hasIbus && !modules.hasFcitx && !modules.hasQt) return {};
    bool hasRelay = false;
    bool hasIbus = false;
    auto processes = processesNamed([&](std::string_view name) {
        const bool isIbusHere = modules.hasIbus && isIbus(name);
        const bool isRelay = isIbusHere || (modules.hasFcitx && isFcitx(name)) ||
                             (modules.hasQt && isRegistry(name));
        hasIbus = hasIbus || isIbusHere;
        hasRelay = hasRelay || isRelay;
        return isRelay || isBus(name);
    });
    if (!hasRelay) return {};
    processes.push_back(pid);
    return KeyRelay(std::move(processes), modules.isGtk4 && hasIbus);
}

void KeyRelay::waitUntilIdle() {
    const auto deadline = std::chrono::steady_clock::now() + timeout_;
    // A process that passes a key on wakes the next one before it sleeps itself: so when none of
    // them has run between two looks, none has a key.
    std::vector<std::uint64_t> before;
    while (std::chrono::steady_clock::now() < deadline) {
        std::vector<std::uint64_t> now = cpuTimesWhenIdle();
        if (!now.empty() && now == before) return;
        before = std::move(now);
        std::this_thread::sleep_for(kRelayLookInterval);
    }
    timeout_ = kBusyRelayTimeout;
}

/// What each has run so far; empty while one of them runs. One that has ended has not run.
std::vector<std::uint64_t> KeyRelay::cpuTimesWhenIdle() const {
    std::vector<std::uint64_t> times;
    for (const std::int32_t process : processes_) {
        const auto time = cpuTimeWhenIdle(process);
        if (!time) return {};
        times.push_back(*time);
    }
    return times;
}

}  // namespace quil::linux_platform
