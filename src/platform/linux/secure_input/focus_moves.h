#pragma once

#include <chrono>
#include <deque>
#include <optional>
#include <vector>

#include "platform/linux/secure_input/focus_timeline.h"

namespace quil::linux_platform {

/// A program that has shown no progress for so long is taken to be idle; and so long after it has
/// processed what the user did, it has reported its focus.
inline constexpr std::chrono::milliseconds kSettling{150};

/// What the user did that may have moved the focus, and when the program had processed it. Toolkits
/// put the time of the latest key or button press that they have processed on their windows. A
/// program that does not is taken to be prompt, until it is seen to have been stuck.
class FocusMoves {
  public:
    /// The user did something. What is no press (a button that is let go, a window that comes to
    /// the front) is processed together with the press before or after it.
    enum class Kind { press, release, windowChange };
    void add(TapTime time, Kind kind);

    /// The latest one before the key; null when there is none.
    const FocusMove* latestBefore(TapTime key) const;
    /// The moves, oldest first. A press and its release are one.
    std::vector<FocusMove> all() const;

    /// Whether some may not have been processed by the program.
    bool areOpen() const { return !moves_.empty() && !moves_.back().move.handled; }
    /// The latest press that the program says it has processed; nothing when it does not say.
    void programProcessed(std::optional<TapTime> latestPress, TapTime now);
    /// When the program was seen to have processed another press.
    TapTime latestProgress() const { return processedSince_; }
    /// Since when the program has reported no other press, with moves that it may not have
    /// processed.
    TapTime quietSince() const;
    /// The program is idle: it has processed the moves until then, or was not sent them.
    void programWasIdle(TapTime then);
    /// The program was asked at one time and has replied to that at the other; what it processed
    /// well before it was asked has had all its effects.
    void programReplied(TapTime asked, TapTime replied);
    /// The program was asked then, and has not replied in time.
    void programHangs(TapTime asked);
    /// The program was asked at one time and replied late.
    void programWasStuck(TapTime asked, TapTime replied);

  private:
    struct Entry {
        FocusMove move;
        Kind kind;
        /// The press by which the program shows that it has processed it.
        TapTime press;
        /// It has shown that.
        bool isCertain = false;
    };

    std::deque<Entry> moves_;
    TapTime lastPress_;
    std::optional<TapTime> processedPress_;
    TapTime processedSince_;
    /// When the program was last stuck, from the question that it did not reply to in time.
    std::optional<TapTime> hangsSince_;
    TapTime stuckSince_, stuckUntil_;
};

}  // namespace quil::linux_platform
