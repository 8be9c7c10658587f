#include "platform/linux/x11/input/text_typist.h"

#include <algorithm>
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
/// One that does not tell how far it is must deal with all of them before it counts as hanging.
constexpr std::uint32_t kPartsAheadOfSilent = 4;
/// Other runtimes take the keyboard from one that gives no sign for some seconds.
constexpr std::chrono::milliseconds kSignInterval{1000};

enum class Following { yes, hangs, lostTurn };

/// Waits until the program has dealt with all parts but the last `open` ones.
Following waitFor(KeyboardSession& session, FocusedClient& receiver, std::uint32_t open) {
    for (;;) {
        const bool hasPassed = receiver.waitForPings(open, kSignInterval);
        if (!session.keepTurn()) return Following::lostTurn;
        if (hasPassed) return Following::yes;
        if (receiver.isHanging()) return Following::hangs;
    }
}

/// Waits until the program has dealt with all that was sent.
Following waitForAll(KeyboardSession& session, FocusedClient& receiver) {
    for (std::uint32_t open = kPartsAhead; open > 0;) {
        const Following following = waitFor(session, receiver, --open);
        if (following != Following::yes) return following;
    }
    return Following::yes;
}

/// Sends strokes no faster than the program can follow. One that hangs gets them nevertheless, as
/// from a user who types on: the server keeps them until it reads them.
Following sendStrokes(KeyboardSession& session, FocusedClient& receiver,
                      std::span<const Stroke> strokes) {
    const std::size_t atOnce = receiver.takesKeysSingly() ? 1 : kStrokesAtOnce;
    const std::uint32_t partsAhead = receiver.takesKeysSingly() ? 0
                                     : receiver.answersPings()  ? kPartsAhead
                                                                : kPartsAheadOfSilent;
    Following following = Following::yes;
    while (!strokes.empty()) {
        const auto part = strokes.first(std::min(strokes.size(), atOnce));
        for (const Stroke& stroke : part) {
            session.useModifiers(stroke.modifiers);
            session.tap(stroke.keyCode);
        }
        session.useModifiersAsBefore();
        receiver.sendPing();
        // What the server has not dealt with is lost should the process be ended: keys that it is
        // in the middle of stay down. So one part at the most is on its way.
        session.connection().sync();
        if (following == Following::yes) following = waitFor(session, receiver, partsAhead);
        if (following == Following::lostTurn || !session.keepTurn()) return Following::lostTurn;
        strokes = strokes.subspan(part.size());
    }
    return following;
}

}  // namespace

void typeText(KeyboardSession& session, std::u16string_view text) {
    if (!session.knowsKeys()) return;
    SpareKeyUse spare(session.connection(), session.map());
    const auto batches = planText(keysymsToType(text), session.map(), session.group(),
                                  session.keptLocks(), spare.keys());
    FocusedClient receiver(session.connection());
    // Keys that an earlier use has left behind may still be waited for, too.
    if (spare.isMapped()) receiver.sendPing();
    for (const TextBatch& batch : batches) {
        if (!batch.keysyms.empty()) {
            if (spare.isMapped() && waitForAll(session, receiver) != Following::yes) return;
            if (!spare.map(batch.keysyms)) break;
        }
        if (sendStrokes(session, receiver, batch.strokes) != Following::yes) return;
    }
    if (spare.isMapped() && waitForAll(session, receiver) == Following::yes) spare.unmap();
}

}  // namespace quil::linux_platform
