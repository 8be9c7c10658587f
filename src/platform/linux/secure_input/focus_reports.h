#pragma once

#include <poll.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"
#include "platform/linux/secure_input/focus_timeline.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// A program said that an element has the focus.
struct FocusReport {
    enum class Content { unknown, plain, secret };

    Reference element;
    TapTime arrival;
    /// Whether a password field has it; unknown while the program is still being asked.
    Content content = Content::unknown;
    /// When to ask again, after a reply that told nothing.
    std::optional<TapTime> askAgain = {};
    int timesAsked = 0;
};

/// What the programs on the accessibility bus say of their focus. Nothing here waits but `open`.
class FocusReports {
  public:
    /// Listens to the bus, and looks where the focus of the active window is; null when there is no
    /// bus. Bounded.
    static std::unique_ptr<FocusReports> open(X11Display& display);

    pollfd waiting() { return bus_.bus().waiting(); }
    /// Deals with what has arrived. The time at which there is more to do.
    std::optional<TapTime> process();

    /// The latest reports, oldest first.
    const std::deque<FocusReport>& reports() const { return reports_; }
    /// The process that a report comes from, as far as it is known.
    std::optional<std::int32_t> processOf(const FocusReport& report) const;

    /// A question to some processes. Whoever replies has sent all reports of what it did before.
    struct Round {
        TapTime asked;
        int open = 0;
        /// When the last reply came.
        std::optional<TapTime> replied = {};
        /// Somebody did not reply.
        bool failed = false;
    };
    /// Asks about their latest elements again, for these may have become others.
    std::shared_ptr<const Round> askAgain(const std::set<std::int32_t>& pids);
    /// Finds out which processes are on the bus, without waiting for it.
    void learnPrograms();

  private:
    FocusReports() = default;
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
