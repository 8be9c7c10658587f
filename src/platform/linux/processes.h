#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the kernel says of a running process (/proc). Everything is empty or absent when the
/// process is gone or belongs to somebody else. Text is valid UTF-8.
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

/// The process that started it, or has adopted it.
std::optional<std::int32_t> parentOf(std::int32_t pid);

/// The id of the Flatpak application in whose sandbox it runs; empty for any other process.
std::string flatpakIdOf(std::int32_t pid);

}  // namespace quil::linux_platform
