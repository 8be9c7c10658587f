#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

/// Programs say that their focus has moved some time after the person moved it. From when on it had
/// moved is told by what the person did.
namespace quil::linux_platform {

/// The system's uptime, as the X server and the buses count it.
using TapTime = std::chrono::steady_clock::time_point;

/// Something that the person did that may have moved the focus.
struct FocusMove {
    TapTime time;
    /// It usually does (a click, the Tab key, another window in front), unlike a shortcut.
    bool isLikely = false;
};

/// How long after the person's doing a program may say that the focus has moved.
inline constexpr std::chrono::milliseconds kLongestFocusDelay{1000};

/// What to make of more moves than reports: that shortcuts and the like had no effect, or that
/// those before the last ones had none.
enum class FocusGuess { unlikelyMovesFailed, earlyMovesFailed };

/// From when on each report held, given when the reports arrived, oldest first: the latest reports
/// are those of the latest moves. A report that no move explains holds from its arrival on.
inline std::vector<TapTime> focusChangeTimes(std::vector<FocusMove> moves,
                                             const std::vector<TapTime>& arrivals,
                                             FocusGuess guess) {
    std::vector<TapTime> times = arrivals;
    if (arrivals.empty()) return times;
    std::erase_if(moves, [&](const FocusMove& move) {
        return move.time > arrivals.back() || move.time + kLongestFocusDelay < arrivals.front();
    });
    if (guess == FocusGuess::unlikelyMovesFailed) {
        for (auto move = moves.end(); move != moves.begin() && moves.size() > arrivals.size();) {
            --move;
            if (!move->isLikely) move = moves.erase(move);
        }
    }
    for (auto time = times.rbegin(); time != times.rend(); ++time) {
        while (!moves.empty() && moves.back().time > *time) moves.pop_back();
        if (moves.empty()) break;
        if (moves.back().time + kLongestFocusDelay < *time) continue;
        *time = moves.back().time;
        moves.pop_back();
    }
    return times;
}

}  // namespace quil::linux_platform
