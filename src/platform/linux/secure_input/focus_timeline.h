#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

#include "platform/linux/secure_input/server_clock.h"

/// Programs say that their focus has moved some time after the user moved it. From when on it had
/// moved is told by what the user did.
namespace quil::linux_platform {

/// Something that the user did that may have moved the focus.
struct FocusMove {
    TapTime time;
    /// It usually does (a click, the Tab key, another window in front), unlike a shortcut.
    bool isLikely = false;
    /// When the program had come to it; nothing as long as that is not known.
    std::optional<TapTime> handled = {};
};

/// A program said that its focus has moved.
struct FocusNews {
    TapTime arrival;
    /// Whether it may have moved to where a secret is typed.
    bool isSecret = false;
};

/// How long after it came to the user's doing a program may say that the focus has moved.
inline constexpr std::chrono::milliseconds kLongestFocusDelay{1000};
/// How long the news of a focus that a program moved by itself may be under way.
inline constexpr std::chrono::milliseconds kLongestNewsDelay{50};

/// What to make of more moves than reports: that shortcuts and the like had no effect, or that
/// those before the last ones had none.
enum class FocusGuess { unlikelyMovesFailed, earlyMovesFailed };

/// From when on each report held, given the reports, oldest first: the latest reports are those of
/// the latest moves. A report that no move explains holds from its arrival on, or a little earlier
/// when secrets ask for it.
inline std::vector<TapTime> focusChangeTimes(std::vector<FocusMove> moves,
                                             const std::vector<FocusNews>& news, FocusGuess guess) {
    std::vector<TapTime> times;
    if (news.empty()) return times;
    const auto latestNews = [](const FocusMove& move) {
        return move.handled.value_or(move.time) + kLongestFocusDelay;
    };
    std::erase_if(moves, [&](const FocusMove& move) {
        return move.time > news.back().arrival || latestNews(move) < news.front().arrival;
    });
    if (guess == FocusGuess::unlikelyMovesFailed && moves.size() > news.size()) {
        // The latest ones first.
        std::size_t tooMany = moves.size() - news.size();
        const auto kept = std::remove_if(moves.rbegin(), moves.rend(), [&](const FocusMove& move) {
            if (move.isLikely || tooMany == 0) return false;
            --tooMany;
            return true;
        });
        moves.erase(moves.begin(), kept.base());
    }
    for (auto report = news.rbegin(); report != news.rend(); ++report) {
        while (!moves.empty() && moves.back().time > report->arrival) moves.pop_back();
        if (moves.empty() || latestNews(moves.back()) < report->arrival) {
            const auto lead = report->isSecret ? kLongestNewsDelay : std::chrono::milliseconds(0);
            times.push_back(report->arrival - lead);
        } else {
            times.push_back(moves.back().time);
            moves.pop_back();
        }
    }
    std::ranges::reverse(times);
    return times;
}

}  // namespace quil::linux_platform
