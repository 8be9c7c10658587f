#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The names under which a process is on the accessibility bus now, in the registry's order.
std::vector<std::string> busNamesOf(AccessibilityBus& bus, std::int32_t pid);

/// Finds the processes of applications on the accessibility bus, also those about to join it.
class ApplicationLookup {
  public:
    /// Both outlive this.
    ApplicationLookup(AccessibilityBus& bus, X11Display& display) : bus_(bus), display_(display) {}

    /// The names of the process. When it has none: those of a relative of it (same sandbox,
    /// ancestor or descendant) with a window of the same title and size. One that has only just
    /// started, or been woken, is waited for: once and bounded.
    std::vector<std::string> busNamesOf(std::int32_t pid);
    /// Whether the process was looked for in vain long enough that it will not come any more, by a
    /// bus that replies.
    bool isUnreachable(std::int32_t pid);

  private:
    /// A process, named for good by its id and its start time.
    using Process = std::pair<std::int32_t, std::uint64_t>;

    std::vector<std::string> relativesOf(std::int32_t pid);

    AccessibilityBus& bus_;
    X11Display& display_;
    /// Those that never came.
    std::set<Process> unreachable_;
};

}  // namespace quil::linux_platform
