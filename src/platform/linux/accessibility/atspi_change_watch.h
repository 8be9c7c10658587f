#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "platform/accessibility.h"
#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Notices the events that a program and the processes it started send on the accessibility bus,
/// and another active window. It has connections of its own, which end with it: events that nobody
/// reads would pile up in the bus.
class AtspiChangeWatch : public ChangeWatch {
  public:
    /// Watches the program with that process id; 0 for the active window alone. Null when there is
    /// neither an accessibility bus nor an X server. Bounded.
    static std::unique_ptr<AtspiChangeWatch> begin(std::int32_t pid);

    bool wait(std::uint64_t microseconds) override;

  private:
    explicit AtspiChangeWatch(std::int32_t pid) : pid_(pid) {}
    void listen();
    void watchActiveWindow();
    void eventFrom(const std::string& busName);
    void learnProcess(const std::string& busName);
    bool process();

    const std::int32_t pid_;
    AccessibilityBus bus_;
    bool hasBus_ = false;
    std::shared_ptr<X11Connection> server_;
    bool noticed_ = false;
    /// Whether what the programs on the bus say is about the watched one; unknown until the bus has
    /// given their process.
    std::map<std::string, std::optional<bool>> isWatched_;
};

}  // namespace quil::linux_platform
