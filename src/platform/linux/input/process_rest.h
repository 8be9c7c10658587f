#pragma once

#include <cstdint>
#include <optional>

namespace quil::linux_platform {

/// What the process's threads have run so far, in nanoseconds; nothing while one of them runs or
/// wants to. 0 for a process that has ended.
std::optional<std::uint64_t> timeRunAtRest(std::int32_t pid);

}  // namespace quil::linux_platform
