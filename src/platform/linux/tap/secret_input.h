#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/tap/focus_reports.h"
#include "platform/linux/tap/focus_timeline.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Tells which keys went into a password field, or to a program that asks for a password in a way
/// of its own: it has grabbed the keyboard, and is not the active one or does not say what has the
/// focus. A program says that its focus has moved a moment after the key that moved it, so the keys
/// after such a one have to wait for that moment; keys of a text that is being typed do not.
class SecretInput {
  public:
    /// Finds out where the focus is now. Bounded.
    explicit SecretInput(X11Display& display);

    /// The person did something that may move the focus.
    void mayMoveFocus(TapTime time, bool isLikely);
    /// Another window got the focus.
    void windowGotFocus(TapTime time);
    /// A program asked for all keys, a client of the X server by the base of its ids; or a grab has
    /// ended, by whomever when it is nothing.
    void grabs(std::uint32_t client) { grabber_ = client; }
    void ungrabs(std::optional<std::uint32_t> client);

    /// Adds the descriptor to wait for.
    void prepareToWait(std::vector<pollfd>& descriptors);
    /// Deals with what has arrived. The time at which there is more to do.
    std::optional<TapTime> process();
    /// When a key of that time can be judged; nothing when it can be now.
    std::optional<TapTime> waitsUntil(TapTime key);
    /// Whether a key of that time is nobody's business.
    bool isSecret(TapTime key);

  private:
    struct ActiveProgram {
        std::optional<std::int32_t> pid;
        /// The base of its X ids; 0 when there is none.
        std::uint32_t client = 0;
    };

    void check();
    void lookAtActiveProgram();
    bool speaksForActive(std::int32_t pid);
    std::vector<const FocusReport*> relevantReports(TapTime key);

    X11Display& display_;
    /// Null when there is no accessibility bus.
    std::unique_ptr<FocusReports> reports_;
    std::deque<FocusMove> moves_;
    TapTime windowGotFocus_;
    /// When the active program was last looked for and asked.
    TapTime checked_;
    ActiveProgram active_;
    /// Whether these processes speak for the active program.
    std::map<std::int32_t, bool> speakers_;
    std::optional<std::uint32_t> grabber_;
};

}  // namespace quil::linux_platform
