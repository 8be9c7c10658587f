#include "platform/linux/secure_input/focus_moves.h"

#include <algorithm>
#include <vector>

namespace quil::linux_platform {
namespace {

/// Older moves than these matter to no key, however long a program is waited for.
constexpr std::chrono::seconds kMemory{45};
constexpr std::size_t kMaximumMoves = 20'000;
constexpr std::size_t kAlwaysKept = 16;

}  // namespace

void FocusMoves::add(TapTime time, Kind kind) {
    if (kind == Kind::press) lastPress_ = time;
    const TapTime press = kind == Kind::release ? lastPress_ : time;
    // Only what comes after it goes elsewhere.
    const TapTime after = time + std::chrono::nanoseconds(1);
    moves_.push_back({{.time = after, .end = after}, kind, press});
    while (moves_.size() > kMaximumMoves ||
           (moves_.size() > kAlwaysKept && moves_.front().move.time + kMemory < time)) {
        moves_.pop_front();
    }
}

const FocusMove* FocusMoves::latestBefore(TapTime key) const {
    const auto after = std::ranges::upper_bound(moves_, key, {},
                                                [](const Entry& entry) { return entry.move.time; });
    return after == moves_.begin() ? nullptr : &std::prev(after)->move;
}

std::vector<FocusMove> FocusMoves::all() const {
    std::vector<FocusMove> moves;
    moves.reserve(moves_.size());
    for (const Entry& entry : moves_) {
        if (entry.kind != Kind::release || moves.empty()) {
            moves.push_back(entry.move);
            continue;
        }
        moves.back().end = entry.move.time;
        moves.back().handled = entry.move.handled;
        moves.back().settled = entry.move.settled;
    }
    return moves;
}

void FocusMoves::programProcessed(std::optional<TapTime> latestPress, TapTime now) {
    if (latestPress != processedPress_) {
        processedPress_ = latestPress;
        processedSince_ = now;
    }
    for (auto entry = moves_.rbegin(); entry != moves_.rend() && !entry->move.handled; ++entry) {
        if (!latestPress) {
            entry->move.handled = entry->move.time;
        } else if (entry->press <= *latestPress) {
            entry->move.handled = now;
            entry->isCertain = true;
        }
    }
}

TapTime FocusMoves::quietSince() const {
    const auto oldest = std::ranges::find_if(
        moves_, [](const Entry& entry) { return !entry.move.handled.has_value(); });
    return oldest == moves_.end() ? processedSince_ : std::max(processedSince_, oldest->move.time);
}

void FocusMoves::programWasIdle(TapTime then) {
    for (auto entry = moves_.rbegin(); entry != moves_.rend() && !entry->move.handled; ++entry) {
        if (entry->move.time > then) continue;
        const bool wasStuck = entry->move.time + 2 * kSettling >= stuckSince_;
        entry->move.handled = std::max(entry->move.time, wasStuck ? stuckUntil_ : TapTime());
    }
}

void FocusMoves::programReplied(TapTime asked, TapTime replied) {
    for (auto entry = moves_.rbegin(); entry != moves_.rend() && !entry->move.settled; ++entry) {
        if (entry->move.handled && *entry->move.handled + kSettling <= asked) {
            entry->move.settled = replied;
        }
    }
}

void FocusMoves::programHangs(TapTime asked) {
    if (!hangsSince_) hangsSince_ = asked;
}

void FocusMoves::programWasStuck(TapTime asked, TapTime replied) {
    processedSince_ = stuckUntil_ = replied;
    stuckSince_ = hangsSince_.value_or(asked);
    hangsSince_.reset();
    for (auto entry = moves_.rbegin(); entry != moves_.rend(); ++entry) {
        if (entry->move.time + 2 * kSettling < stuckSince_) break;
        if (!entry->move.handled || entry->isCertain) continue;
        entry->move.handled = replied;
        entry->move.settled.reset();
    }
}

}  // namespace quil::linux_platform
