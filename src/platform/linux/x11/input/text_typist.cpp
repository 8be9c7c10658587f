#include "platform/linux/x11/input/text_typist.h"

#include <algorithm>
#include <span>

#include "platform/linux/x11/input/key_receiver.h"
#include "platform/linux/x11/input/spare_key_mapping.h"
#include "platform/linux/x11/input/text_plan.h"

namespace quil::linux_platform {
namespace {

/// Sent in one go. In between, the keyboard is as we found it, should the process be ended.
constexpr std::size_t kStrokesAtOnce = 50;
/// How many such parts the program may be behind: a server keeps what is not read yet.
constexpr std::uint32_t kPartsAhead = 20;
/// For the program to deal with one part.
constexpr std::chrono::milliseconds kPatience{5000};

/// Waits until the program has dealt with all that was sent. Whether it has, and in our turn.
bool waitForAll(KeyboardSession& session, KeyReceiver& receiver) {
    for (std::uint32_t open = kPartsAhead; open > 0;) {
        if (!receiver.waitForMarks(--open, kPatience) || !session.keepTurn()) return false;
    }
    return true;
}

/// Sends strokes no faster than the program can follow. Whether it has followed.
bool sendStrokes(KeyboardSession& session, KeyReceiver& receiver, std::span<const Stroke> strokes) {
    const std::size_t atOnce = receiver.takesKeysSingly() ? 1 : kStrokesAtOnce;
    const std::uint32_t partsAhead = receiver.takesKeysSingly() ? 0 : kPartsAhead;
    while (!strokes.empty()) {
        const auto part = strokes.first(std::min(strokes.size(), atOnce));
        for (const Stroke& stroke : part) {
            session.useModifiers(stroke.modifiers);
            session.tap(stroke.keyCode);
        }
        session.useModifiersAsBefore();
        receiver.mark();
        // What the server has not dealt with is lost should the process be ended: keys that it is
        // in the middle of stay down. So one part at the most is on its way.
        session.connection().sync();
        if (!receiver.waitForMarks(partsAhead, kPatience) || !session.keepTurn()) return false;
        strokes = strokes.subspan(part.size());
    }
    return true;
}

}  // namespace

void typeText(KeyboardSession& session, std::u16string_view text) {
    if (!session.knowsKeys()) return;
    SpareKeyUse spare(session.connection(), session.map());
    const auto batches = planText(symbolsToType(text), session.map(), session.group(),
                                  session.keptLocks(), spare.keys());
    KeyReceiver receiver(session.connection());
    // Keys that an earlier use has left behind may still be waited for, too.
    if (spare.isMapped()) receiver.mark();
    for (const TextBatch& batch : batches) {
        if (!batch.symbols.empty()) {
            if (spare.isMapped() && !waitForAll(session, receiver)) return;
            if (!spare.map(batch.symbols)) break;
        }
        if (!sendStrokes(session, receiver, batch.strokes)) return;
    }
    if (spare.isMapped() && waitForAll(session, receiver)) spare.unmap();
}

}  // namespace quil::linux_platform
