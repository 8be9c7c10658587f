#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "platform/linux/secure_input/server_clock.h"

/// Programs say that their focus has moved some time after the user moved it. From when on it had
/// moved follows from what the user did.
namespace quil::linux_platform {

/// Something that the user did that may have moved the focus: a click from its press to its
/// release, a key, another window in front.
struct FocusMove {
    TapTime time;
    TapTime end = time;
    /// When the program had processed it; nothing as long as that is not known.
    std::optional<TapTime> handled = {};
    /// When the program had reported all that it led to; nothing as long as that is not known.
    std::optional<TapTime> settled = {};
};

/// A program said that its focus has moved.
struct ReportedFocus {
    TapTime arrival;
    /// Whether it may have moved to where a secret is typed.
    bool isSecret = false;
};

/// When the focus was where a report says, at the earliest and at the latest from `earliest` and
/// `latest` on.
struct FocusOnset {
    TapTime earliest, latest;
    bool operator==(const FocusOnset&) const = default;
};

/// How long after it processed what the user did a program may report that the focus has moved.
inline constexpr std::chrono::milliseconds kLongestFocusDelay{1000};
/// How long the report of a focus that a program moved by itself may take to arrive.
inline constexpr std::chrono::milliseconds kLongestReportDelay{50};

/// From when on each report held, given the reports and the moves, both oldest first. Each report
/// is of a move of its own, as far as they suffice; when there are more moves than reports, any of
/// them may have had no effect. A report that no move explains holds from its arrival on, or a
/// little earlier when secrets ask for it.
std::vector<FocusOnset> focusOnsets(const std::vector<FocusMove>& moves,
                                    const std::vector<ReportedFocus>& reports);

}  // namespace quil::linux_platform
