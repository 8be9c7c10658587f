#include "platform/linux/secure_input/focus_timeline.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace quil::linux_platform {
namespace {

using Moves = std::span<const FocusMove>;

bool isLate(const FocusMove& move, TapTime report) {
    return move.settled && *move.settled < report;
}

/// Whether a report that arrived then may be of the move.
bool explains(const FocusMove& move, TapTime report) {
    return move.time <= report && report <= move.handled.value_or(move.time) + kLongestFocusDelay;
}

/// The earliest of the moves that explains the report, but one that has settled only when no other
/// does; null when there is none.
const FocusMove* earliestOf(Moves moves, TapTime report) {
    const auto move = std::ranges::find_if(
        moves, [&](const auto& one) { return explains(one, report) && !isLate(one, report); });
    if (move != moves.end()) return &*move;
    const auto late = std::find_if(moves.rbegin(), moves.rend(),
                                   [&](const auto& one) { return explains(one, report); });
    return late == moves.rend() ? nullptr : &*late;
}

const FocusMove* latestOf(Moves moves, TapTime report) {
    const auto move = std::find_if(moves.rbegin(), moves.rend(),
                                   [&](const auto& one) { return explains(one, report); });
    return move == moves.rend() ? nullptr : &*move;
}

TapTime unexplained(const ReportedFocus& report) {
    return report.arrival - (report.isSecret ? kLongestReportDelay : std::chrono::milliseconds(0));
}

}  // namespace

std::vector<FocusOnset> focusOnsets(const std::vector<FocusMove>& moves,
                                    const std::vector<ReportedFocus>& reports) {
    std::vector<FocusOnset> onsets(reports.size());
    // As if the last moves had had no effect, and one may have led to several reports.
    Moves left(moves);
    const FocusMove* latest = nullptr;
    for (std::size_t i = 0; i < reports.size(); ++i) {
        if (const FocusMove* move = earliestOf(left, reports[i].arrival)) {
            latest = move;
            left = left.subspan(static_cast<std::size_t>(move - left.data()) + 1);
        } else if (latest && !explains(*latest, reports[i].arrival)) {
            latest = nullptr;
        }
        onsets[i].earliest = latest ? latest->time : unexplained(reports[i]);
    }
    // As if the first moves had had none.
    left = moves;
    for (std::size_t i = reports.size(); i-- > 0;) {
        const FocusMove* move = latestOf(left, reports[i].arrival);
        if (move) left = left.first(static_cast<std::size_t>(move - left.data()));
        onsets[i].latest = move ? std::min(move->end, reports[i].arrival) : reports[i].arrival;
        onsets[i].earliest =
            std::min(onsets[i].earliest, move ? move->time : unexplained(reports[i]));
    }
    return onsets;
}

}  // namespace quil::linux_platform
