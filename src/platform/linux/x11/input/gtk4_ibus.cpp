#include "platform/linux/x11/input/gtk4_ibus.h"

#include <charconv>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>

#include "platform/linux/applications/processes.h"

namespace quil::linux_platform {
namespace {

constexpr std::chrono::microseconds kContextPollInterval{200};
/// IBus needs some milliseconds for a key, more on a busy machine.
constexpr std::chrono::milliseconds kBusyContextTimeout{20};

/// Whether the module is in the process: `im-ibus` below `gtk-4.0/`.
bool hasModule(std::int32_t pid) {
    return hasMappedFile(pid, [](std::string_view path) {
        const std::size_t gtk = path.find("/gtk-4.0/");
        return gtk != path.npos && path.find("im-ibus", gtk) != path.npos;
    });
}

bool isIbus(std::string_view name) {
    return name == "ibus-daemon" || name.starts_with("ibus-engine");
}

}  // namespace

std::vector<std::int32_t> ibusProcesses() {
    std::vector<std::int32_t> processes;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        const std::string number = entry.path().filename();
        std::int32_t process = 0;
        const char* const end = number.data() + number.size();
        if (std::from_chars(number.data(), end, process).ptr != end) continue;
        if (isIbus(processName(process))) processes.push_back(process);
    }
    return processes;
}

std::optional<Gtk4Ibus> Gtk4Ibus::find(std::int32_t pid) {
    if (!hasModule(pid)) return {};
    std::vector<std::int32_t> processes = ibusProcesses();
    if (processes.empty()) return {};
    processes.push_back(pid);
    return Gtk4Ibus(std::move(processes));
}

void Gtk4Ibus::waitUntilIdle() {
    const auto deadline = std::chrono::steady_clock::now() + timeout_;
    // A process that passes a key on wakes the next one before it sleeps itself: so when none of
    // them has run between two looks, none has a key.
    std::vector<std::uint64_t> before;
    while (std::chrono::steady_clock::now() < deadline) {
        std::vector<std::uint64_t> now = cpuTimesWhenIdle();
        if (!now.empty() && now == before) return;
        before = std::move(now);
        std::this_thread::sleep_for(kContextPollInterval);
    }
    timeout_ = kBusyContextTimeout;
}

/// What each has run so far; empty while one of them runs. One that has ended has not run.
std::vector<std::uint64_t> Gtk4Ibus::cpuTimesWhenIdle() const {
    std::vector<std::uint64_t> times;
    for (const std::int32_t process : processes_) {
        const auto time = cpuTimeWhenIdle(process);
        if (!time) return {};
        times.push_back(*time);
    }
    return times;
}

}  // namespace quil::linux_platform
