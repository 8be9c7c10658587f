#pragma once

#include <chrono>
#include <deque>
#include <optional>
#include <vector>

#include "platform/linux/secure_input/focus_timeline.h"

namespace quil::linux_platform {

/// After so long without a sign a program is taken to have nothing to do; and so long after it came
/// to what the user did, it says that its focus has moved.
inline constexpr std::chrono::milliseconds kSettling{150};

/// What the user did that may have moved the focus, and when the program had come to it. Toolkits
/// tell by the time of the latest key or button press that they have taken from the server, which
/// they put on their windows. A program that does not tell is taken to be prompt, until it is seen
/// to have been stuck.
class FocusMoves {
  public:
    /// The user did something. What is no press (a button that is let go, a window that comes to
    /// the front) is dealt with together with the press before or after it.
    enum class Kind { press, release, windowChange };
    void add(TapTime time, Kind kind);

    /// The latest one before the key; null when there is none.
    const FocusMove* latestBefore(TapTime key) const;
    /// The moves, oldest first. A press and its release are one.
    std::vector<FocusMove> all() const;

    /// Whether it is not known of all whether the program has come to them.
    bool areOpen() const { return !moves_.empty() && !moves_.back().move.handled; }
    /// What the program tells of itself now; nothing when it does not.
    void programProcessed(std::optional<TapTime> latestPress, TapTime now);
    /// When the program was seen to have come to another press.
    TapTime latestProgress() const { return processedSince_; }
    /// Since when the program has told of no other press, with moves that it may not have come to.
    TapTime quietSince() const;
    /// The program has nothing to do, but was not told of the moves until then.
    void programWasIdle(TapTime then);
    /// The program was asked at one time and has replied to that at the other; what it came to well
    /// before it was asked has had all its effects.
    void programReplied(TapTime asked, TapTime replied);
    /// The program was asked then, and has not replied by the time at which one gives up.
    void programHangs(TapTime asked);
    /// The program was asked at one time and replied late.
    void programWasStuck(TapTime asked, TapTime replied);

  private:
    struct Entry {
        FocusMove move;
        Kind kind;
        /// The press by which the program shows that it has come to it.
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
