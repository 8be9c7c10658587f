#pragma once

#include <poll.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"
#include "platform/linux/secure_input/focus_sources.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// What the programs on the accessibility bus (AT-SPI) say of their focus.
class AtspiFocusReports : public FocusReports {
  public:
    /// Listens to the bus, and looks where the focus of the active window is; null when there is no
    /// bus. Bounded.
    static std::unique_ptr<AtspiFocusReports> open(X11Display& display);

    pollfd waiting() { return bus_.bus().waiting(); }

    std::optional<TapTime> process() override;
    const std::deque<FocusReport>& reports() const override { return reports_; }
    std::optional<std::int32_t> processOf(const FocusReport& report) const override;
    std::shared_ptr<const Round> askAgain(const std::set<std::int32_t>& pids) override;
    void learnPrograms() override;

  private:
    AtspiFocusReports() = default;
    void listen();
    void findFocus(X11Display& display);
    void add(Reference element, TapTime arrival);
    void learnProcess(const std::string& name);
    std::optional<Reference> latestElement(std::int32_t pid) const;
    void ask(FocusReport& report);
    void roleReceived(const Reference& element, const Reply& reply);
    void roleChanged(const Reference& element);

    AccessibilityBus bus_;
    std::deque<FocusReport> reports_;
    std::map<std::string, std::optional<std::int32_t>> processes_;
};

}  // namespace quil::linux_platform
