#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the kernel says of a running process (/proc). Everything is empty or absent when the
/// process is gone or belongs to another user. Text is valid UTF-8.
namespace quil::linux_platform {

/// The path of its executable.
std::optional<std::string> executableOf(std::int32_t pid);

/// Its command line.
std::vector<std::string> argumentsOf(std::int32_t pid);

/// A variable of the environment that it was started with; empty when it is not set.
std::string environmentVariableOf(std::int32_t pid, std::string_view name);

/// The short name that the kernel keeps of it.
std::string processName(std::int32_t pid);

/// When it started, in clock ticks since the system did. Together with the process id this names
/// the process for good; the id alone is used again.
std::optional<std::uint64_t> startTimeOf(std::int32_t pid);

/// Whether it has ended, be it that its parent has not yet taken note.
bool hasEnded(std::int32_t pid);

/// The process that started it, or has adopted it.
std::optional<std::int32_t> parentOf(std::int32_t pid);

/// Whether it was started by the other process, directly or through others (15 at the most).
bool isDescendantOf(std::int32_t pid, std::int32_t ancestor);

/// The session that it belongs to, which is the id of the process that began it (setsid(2)).
std::optional<std::int32_t> sessionOf(std::int32_t pid);

/// The folder that it is in.
std::optional<std::string> workingFolderOf(std::int32_t pid);

/// Whether a file with such a path is mapped into its memory, as libraries and modules are.
bool hasMappedFile(std::int32_t pid, const std::function<bool(std::string_view path)>& isWanted);

/// A thread of a process.
struct ThreadActivity {
    std::int32_t id = 0;
    /// Whether it waits for something. One that runs, wants to, or has been stopped does not.
    bool isSleeping = false;
    /// What it has run so far, and how long it has waited for a processor, in nanoseconds.
    std::uint64_t cpuTime = 0;
    std::uint64_t waitTime = 0;
};

/// Its threads, the first one first; none when it has ended or cannot be looked at.
std::vector<ThreadActivity> threadsOf(std::int32_t pid);

/// What its threads have run so far, in nanoseconds; nothing while one of them runs or wants to. 0
/// for a process that has ended.
std::optional<std::uint64_t> cpuTimeWhenIdle(std::int32_t pid);

/// The process and those of its descendants that run the same program, as browsers split theirs up.
std::vector<std::int32_t> processesOfProgram(std::int32_t pid);

/// The id of the Flatpak application in whose sandbox it runs; empty for any other process.
std::string flatpakIdOf(std::int32_t pid);

}  // namespace quil::linux_platform
