#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/linux/secure_input/focus_moves.h"
#include "platform/linux/secure_input/focus_sources.h"
#include "platform/linux/secure_input/focus_timeline.h"
#include "platform/linux/secure_input/keyboard_grabs.h"
#include "platform/linux/secure_input/server_clock.h"

namespace quil::linux_platform {

/// Decides which keys went into a password field, or to a program that asks for a password in a way
/// of its own: it has grabbed the keyboard, and is not the active one or does not say what has the
/// focus.
///
/// A program says by itself when its focus has moved, a little later. So a key waits for what may
/// be under way. After something that may have moved the focus it waits until the program has come
/// to that, and has then replied to a question, which it does after it has said where its focus is.
/// Keys of a text that is being typed cost no question. A program that is stuck gets its keys
/// judged when it is back; of one that stays stuck they count as secret.
class SecretInput {
  public:
    /// The sources have to live as long.
    explicit SecretInput(FocusSources& sources);

    /// The user did something that may move the focus.
    void mayMoveFocus(TapTime time, FocusMoves::Kind kind);
    /// Another window got the focus.
    void windowGotFocus(TapTime time);
    /// Processes what has arrived.
    void process();
    /// Whether a key pressed then must not be recorded, pressed while these clients of the X server
    /// had grabbed a keyboard; nothing while that is not known.
    std::optional<bool> isSecret(TapTime key, std::span<const ClientId> grabbers);
    /// When there is more to do though nothing arrives, as of the latest call of the two above.
    std::optional<TapTime> nextLook() const { return nextLook_; }

  private:
    struct Span {
        TapTime begin, end;
    };
    /// What the reports make of keys.
    struct Judgement {
        /// When keys went into password fields, and when into what has not said what it is.
        std::vector<Span> secrets, unknown;
        /// Since when the program has said what has its focus.
        TapTime firstReport = TapTime::max();
    };

    void followProgram();
    bool isActiveProgramOutdated(TapTime now) const;
    void findActiveProgram();
    void wakeAt(TapTime time);
    void ask();
    void finishRound();
    bool isKnown(TapTime key);
    TapTime verdictDeadline(TapTime key) const;
    bool belongsToActive(std::int32_t pid);
    std::vector<const FocusReport*> relevantReports(bool isActiveStill);
    const Judgement& judgement(bool isActiveStill);

    FocusSources& sources_;
    /// Null when there is no accessibility bus.
    FocusReports* const reports_;
    FocusMoves moves_;
    TapTime windowGotFocus_;
    /// When the active program was last looked for.
    TapTime activeProgramFound_;
    ActiveProgram active_;
    std::optional<std::int32_t> previousPid_;
    /// Whether these processes belong to the active program.
    std::map<std::int32_t, bool> belongToActive_;
    /// The question that is open, when the latest reply came, and when the latest question was
    /// asked that all have replied to.
    std::shared_ptr<const FocusReports::Round> round_;
    TapTime replied_;
    TapTime passed_;
    /// For the keys before and since the latest change of windows, until something new is known.
    std::array<std::optional<Judgement>, 2> judgements_;
    std::optional<TapTime> nextLook_;
};

}  // namespace quil::linux_platform
