#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <set>

#include "platform/linux/atspi/facts.h"
#include "platform/linux/secure_input/keyboard_grabs.h"
#include "platform/linux/secure_input/server_clock.h"

/// What SecretInput knows of the desktop; a test has a desktop of its own.
namespace quil::linux_platform {

/// The program whose window is active.
struct ActiveProgram {
    std::optional<std::int32_t> pid;
    /// 0 when there is none.
    ClientId client = 0;
    /// The window whose property has the time of the latest key or button press that it has
    /// processed.
    std::uint32_t userTimeWindow = 0;
};

/// A program said that an element has the focus.
struct FocusReport {
    enum class Content { unknown, plain, secret };

    Reference element;
    TapTime arrival;
    /// Whether a password field has it; unknown while the program is still being asked.
    Content content = Content::unknown;
    /// When to ask again, after a reply without a role.
    std::optional<TapTime> askAgain = {};
    int timesAsked = 0;
};

/// What the programs on the accessibility bus say of their focus. Nothing here waits.
class FocusReports {
  public:
    virtual ~FocusReports() = default;

    /// Processes what has arrived. The time at which there is more to do.
    virtual std::optional<TapTime> process() = 0;
    /// The latest reports, oldest first.
    virtual const std::deque<FocusReport>& reports() const = 0;
    /// The process that a report comes from, as far as it is known.
    virtual std::optional<std::int32_t> processOf(const FocusReport& report) const = 0;

    /// A question to some processes. One that replies has sent all reports of what it did before.
    struct Round {
        TapTime asked;
        int open = 0;
        /// When the last reply came.
        std::optional<TapTime> replied = {};
        /// One of them did not reply.
        bool failed = false;
    };
    /// Asks about their latest elements again, for these may have become others.
    virtual std::shared_ptr<const Round> askAgain(const std::set<std::int32_t>& pids) = 0;
    /// Finds out which processes are on the bus.
    virtual void learnPrograms() = 0;
};

class FocusSources {
  public:
    virtual ~FocusSources() = default;

    virtual TapTime now() = 0;
    /// Null when there is no accessibility bus.
    virtual FocusReports* reports() = 0;
    /// Without a program when there is no active window.
    virtual ActiveProgram activeProgram() = 0;
    /// The time of the latest press that the program has processed; nothing when it does not say.
    virtual std::optional<TapTime> latestPressOf(const ActiveProgram& program) = 0;
    /// Whether the process was started by the other one, itself or through others, and has no
    /// window of its own (as the processes of a web browser's pages).
    virtual bool isHelperOf(std::int32_t pid, std::int32_t program) = 0;
};

}  // namespace quil::linux_platform
