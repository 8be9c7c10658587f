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
constexpr std::uint32_t kPartsAheadWithoutPings = 4;
/// Other runtimes take the keyboard from one that gives no sign for some seconds.
constexpr std::chrono::milliseconds kLockRenewInterval{1000};

enum class Progress { done, hangs, lostLock };

/// Waits until the program has dealt with all parts but the last `open` ones.
Progress waitFor(KeyboardSession& session, FocusedClient& client, std::uint32_t open) {
    for (;;) {
        const bool hasReplied = client.waitForPings(open, kLockRenewInterval);
        if (!session.keepLock()) return Progress::lostLock;
        if (hasReplied) return Progress::done;
        if (client.isHanging()) return Progress::hangs;
    }
}

/// Waits until the program has dealt with all that was sent.
Progress waitForAll(KeyboardSession& session, FocusedClient& client) {
    for (std::uint32_t open = kPartsAhead; open > 0;) {
        const Progress progress = waitFor(session, client, --open);
        if (progress != Progress::done) return progress;
    }
    return Progress::done;
}

/// Sends strokes no faster than the program can follow. One that hangs gets them nevertheless, as
/// from a user who types on: the server keeps them until it reads them.
Progress sendStrokes(KeyboardSession& session, FocusedClient& client,
                     std::span<const Stroke> strokes) {
    const std::size_t atOnce = client.takesKeysSingly() ? 1 : kStrokesAtOnce;
    const std::uint32_t partsAhead = client.takesKeysSingly()  ? 0
                                     : client.repliesToPings() ? kPartsAhead
                                                               : kPartsAheadWithoutPings;
    Progress progress = Progress::done;
    while (!strokes.empty()) {
        const auto part = strokes.first(std::min(strokes.size(), atOnce));
        for (const Stroke& stroke : part) {
            session.useModifiers(stroke.modifiers);
            session.tap(stroke.keyCode);
        }
        session.useModifiersAsBefore();
        client.sendPing();
        // What the server has not dealt with is lost should the process be ended: keys that it is
        // in the middle of stay down. So one part at the most is on its way.
        session.connection().sync();
        if (progress == Progress::done) progress = waitFor(session, client, partsAhead);
        if (progress == Progress::lostLock || !session.keepLock()) return Progress::lostLock;
        strokes = strokes.subspan(part.size());
    }
    return progress;
}

}  // namespace

void typeText(KeyboardSession& session, std::u16string_view text) {
    if (!session.knowsKeys()) return;
    SpareKeyUse spare(session.connection(), session.map());
    const auto batches = planText(keysymsToType(text), session.map(), session.group(),
                                  session.keptLocks(), spare.keys());
    FocusedClient client(session.connection());
    // Keys that an earlier use has left behind may still be waited for, too.
    if (spare.isMapped()) client.sendPing();
    for (const TextBatch& batch : batches) {
        if (!batch.keysyms.empty()) {
            if (spare.isMapped() && waitForAll(session, client) != Progress::done) return;
            if (!spare.map(batch.keysyms)) break;
        }
        if (sendStrokes(session, client, batch.strokes) != Progress::done) return;
    }
    if (spare.isMapped() && waitForAll(session, client) == Progress::done) spare.unmap();
}

}  // namespace quil::linux_platform
