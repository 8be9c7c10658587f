#include "platform/linux/x11/input/text_typist.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <span>

#include "platform/linux/x11/input/focused_client.h"
#include "platform/linux/x11/input/spare_key_mapping.h"
#include "platform/linux/x11/input/text_plan.h"

namespace quil::linux_platform {
namespace {

/// Sent in one go. In between, the keyboard is as we found it, should the process be ended.
constexpr std::size_t kStrokesAtOnce = 50;
/// How many such parts the program may be behind: a server keeps what is not read yet.
constexpr std::uint32_t kPartsAhead = 20;
/// One that relays its keys replies before it has processed them: so often it is waited for.
constexpr std::size_t kRelayedParts = 5;
/// One that does not reply to pings must process all of them before it counts as hanging.
constexpr std::uint32_t kPartsAheadWithoutPings = 4;
/// Waits that make the parts smaller, or larger again.
constexpr std::chrono::milliseconds kLongWait{500};
constexpr std::chrono::milliseconds kShortWait{50};
/// Other runtimes take the keyboard from one that gives no sign for some seconds.
constexpr std::chrono::milliseconds kLockRenewInterval{1000};

/// A user who changes the layout more often than this while a text is typed has to wait.
constexpr int kMaximumLayouts = 100;

enum class Progress { done, hangs, lostLock, layoutChanged };
using Keysyms = std::span<const std::uint32_t>;

/// Waits until the program has processed all parts but the last `open` ones.
Progress waitFor(KeyboardSession& session, FocusedClient& client, std::uint32_t open) {
    for (;;) {
        const bool hasReplied = client.waitForPings(open, kLockRenewInterval);
        if (!session.keepLock()) return Progress::lostLock;
        if (hasReplied) return Progress::done;
        if (client.isHanging()) return Progress::hangs;
        session.takeNewKeys();
    }
}

/// Waits until the program has processed all that was sent.
Progress waitForAll(KeyboardSession& session, FocusedClient& client) {
    for (std::uint32_t open = kPartsAhead; open > 0;) {
        const Progress progress = waitFor(session, client, --open);
        if (progress != Progress::done) return progress;
    }
    return Progress::done;
}

/// How much is sent before the program is waited for: less to a slow one, whose progress would not
/// be seen otherwise.
class Pace {
  public:
    explicit Pace(const FocusedClient& client)
        : maximumAtOnce_(client.takesKeysSingly() ? 1 : kStrokesAtOnce),
          maximumAhead_(client.takesKeysSingly()  ? 0
                        : client.repliesToPings() ? kPartsAhead
                                                  : kPartsAheadWithoutPings),
          ahead_(client.repliesToPings() ? maximumAhead_ : 0) {}

    /// The strokes of one part.
    std::size_t atOnce() const { return atOnce_; }
    /// The parts that the program may be behind.
    std::uint32_t ahead() const { return ahead_; }

    /// The program has kept us waiting for this long.
    void adapt(std::chrono::steady_clock::duration wait) {
        if (wait > kLongWait) {
            if (ahead_ == 0) atOnce_ = std::max<std::size_t>(1, atOnce_ / 2);
            ahead_ /= 2;
        } else if (wait < kShortWait) {
            if (atOnce_ == maximumAtOnce_) ahead_ = std::min(maximumAhead_, ahead_ + 1);
            atOnce_ = std::min(maximumAtOnce_, atOnce_ * 2);
        }
    }

  private:
    std::size_t maximumAtOnce_;
    std::uint32_t maximumAhead_;
    std::size_t atOnce_ = maximumAtOnce_;
    /// None at first for one that does not reply to pings.
    std::uint32_t ahead_;
};

/// The next strokes to send in one go: at most so many, and a string by itself where it could
/// overtake others.
std::span<const Stroke> nextPart(const FocusedClient& client, std::span<const Stroke> strokes,
                                 std::size_t atOnce) {
    const auto part = strokes.first(std::min(strokes.size(), atOnce));
    if (!client.reordersStrings()) return part;
    const auto change = std::ranges::adjacent_find(
        part, [](const Stroke& a, const Stroke& b) { return a.isString || b.isString; });
    if (change == part.end()) return part;
    return part.first(static_cast<std::size_t>(change - part.begin()) + 1);
}

/// Sends strokes no faster than the program can follow. One that hangs gets them all the same, as
/// from a user who types on: the server keeps them until it reads them. `keysyms` begin with those
/// of the strokes, and lose those that have been sent.
Progress sendStrokes(KeyboardSession& session, FocusedClient& client, const SpareKeyUse& spare,
                     std::span<const Stroke> strokes, Keysyms& keysyms) {
    Pace pace(client);
    Progress progress = Progress::done;
    for (std::size_t parts = 1; !strokes.empty(); ++parts) {
        const auto part = nextPart(client, strokes, pace.atOnce());
        session.takeNewKeys();
        if (!session.keepsLayout(spare.shownMap())) return Progress::layoutChanged;
        for (const Stroke& stroke : part) {
            if (stroke.keyCode == 0) continue;
            session.useModifiers(stroke.modifiers);
            session.tap(stroke.keyCode);
        }
        session.useModifiersAsBefore();
        client.sendPing();
        // What the server has not processed is lost should the process be ended: keys that it is in
        // the middle of stay down. So one part at the most is on its way.
        session.connection().sync();
        strokes = strokes.subspan(part.size());
        keysyms = keysyms.subspan(part.size());
        const bool mayReorder = client.reordersStrings() && !strokes.empty() &&
                                (strokes.front().isString || part.back().isString);
        if (progress == Progress::done) {
            const auto began = std::chrono::steady_clock::now();
            const bool isRelayed = client.relaysKeys() && parts % kRelayedParts == 0;
            progress = waitFor(session, client, mayReorder || isRelayed ? 0 : pace.ahead());
            pace.adapt(std::chrono::steady_clock::now() - began);
        }
        if (progress == Progress::lostLock || !session.keepLock()) return Progress::lostLock;
    }
    return progress;
}

/// Types the keysyms as far as the user stays in the layout; they lose those that have been sent.
Progress typeInLayout(KeyboardSession& session, FocusedClient& client, SpareKeyUse& spare,
                      Keysyms& keysyms) {
    const auto batches = planText({keysyms.begin(), keysyms.end()}, session.map(), session.group(),
                                  session.keptLocks(), spare.keys());
    for (const TextBatch& batch : batches) {
        if (!batch.keysyms.empty()) {
            if (spare.isMapped()) {
                const Progress progress = waitForAll(session, client);
                if (progress != Progress::done) return progress;
            }
            if (!session.keepsLayout(spare.shownMap()) || !spare.map(batch.keysyms)) {
                return Progress::layoutChanged;
            }
        }
        const Progress progress = sendStrokes(session, client, spare, batch.strokes, keysyms);
        if (progress != Progress::done) return progress;
    }
    return Progress::done;
}

}  // namespace

void typeText(KeyboardSession& session, std::u16string_view text) {
    if (!session.knowsKeys()) return;
    FocusedClient client(session.connection());
    const auto all = keysymsToType(text, client.takesUnits());
    Keysyms keysyms = all;
    std::optional<SpareKeyUse> spare;
    Progress progress = Progress::layoutChanged;
    for (int i = 0; i < kMaximumLayouts && progress == Progress::layoutChanged; ++i) {
        if (!spare || session.shownMap() != spare->shownMap()) {
            spare.emplace(session.keyboard(), session.shownMap());
        }
        // Keys that an earlier use has left behind may still be waited for, too.
        if (i == 0 && spare->isMapped()) client.sendPing();
        progress = typeInLayout(session, client, *spare, keysyms);
    }
    if (progress != Progress::done) return;
    if (!spare->isMapped()) {
        client.waitForDelayedKeys();
    } else if (waitForAll(session, client) == Progress::done) {
        spare->unmap();
    }
}

}  // namespace quil::linux_platform
