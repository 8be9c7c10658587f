#pragma once

#include <poll.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/accessibility/accessibility_bus.h"
#include "platform/linux/accessibility/facts.h"
#include "platform/linux/tap/focus_timeline.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// A program said that an element has the focus.
struct FocusReport {
    enum class Content { unknown, plain, secret };

    Reference element;
    TapTime arrival;
    /// Whether a password field has it; unknown while the program is still being asked.
    Content content = Content::unknown;
    /// When to ask again, after an answer that told nothing.
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
    /// Asks about the latest element of this process again, for it may have become another one.
    void askAgain(std::int32_t pid);
    /// Whether a question is open.
    bool isAsking() const { return openQuestions_ > 0; }

  private:
    FocusReports() = default;
    void listen();
    void findFocus(X11Display& display);
    void add(Reference element, TapTime arrival);
    void ask(FocusReport& report);
    void answered(const Reference& element, const Answer& answer);
    void roleChanged(const Reference& element);

    AccessibilityBus bus_;
    std::deque<FocusReport> reports_;
    std::map<std::string, std::optional<std::int32_t>> processes_;
    int openQuestions_ = 0;
};

}  // namespace quil::linux_platform
