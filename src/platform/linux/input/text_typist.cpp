#include "platform/linux/input/text_typist.h"

#include <algorithm>
#include <span>

#include "platform/linux/input/key_receiver.h"
#include "platform/linux/input/spare_key_mapping.h"
#include "platform/linux/input/text_plan.h"

namespace quil::linux_platform {
namespace {

/// Sent in one go. In between, the keyboard is as we found it, should the process be ended.
constexpr std::size_t kStrokesAtOnce = 200;
/// How far we are ahead of the program at most. A server keeps what a program has not read yet.
constexpr std::size_t kStrokesAhead = 200;
/// For a program to deal with as much.
constexpr std::chrono::milliseconds kPatience{5000};

class Typist {
  public:
    explicit Typist(KeyboardSession& session)
        : session_(session), receiver_(session.connection()) {}

    /// Whether the program has kept up.
    bool send(const std::vector<Stroke>& strokes) {
        std::span<const Stroke> rest = strokes;
        while (!rest.empty()) {
            if (ahead_ >= kStrokesAhead && !waitForReceiver()) return false;
            const std::size_t count = std::min(rest.size(), kStrokesAtOnce);
            for (const Stroke& stroke : rest.first(count)) {
                session_.useModifiers(stroke.modifiers);
                session_.tap(stroke.keyCode);
            }
            session_.useModifiersAsBefore();
            xcb_flush(session_.connection().get());
            ahead_ += count;
            rest = rest.subspan(count);
        }
        return true;
    }

    bool waitForReceiver() {
        ahead_ = 0;
        return receiver_.waitUntilDone(kPatience);
    }

  private:
    KeyboardSession& session_;
    KeyReceiver receiver_;
    std::size_t ahead_ = 0;
};

}  // namespace

void typeText(KeyboardSession& session, std::u16string_view text) {
    if (!session.knowsKeys()) return;
    SpareKeyUse spare(session.connection(), session.map());
    const auto batches = planText(symbolsToType(text), session.map(), session.group(),
                                  session.keptLocks(), spare.keys());
    Typist typist(session);
    for (const TextBatch& batch : batches) {
        if (!batch.symbols.empty()) {
            if (spare.isMapped() && !typist.waitForReceiver()) return;
            if (!spare.map(batch.symbols)) break;
        }
        if (!typist.send(batch.strokes)) return;
    }
    if (spare.isMapped() && typist.waitForReceiver()) spare.unmap();
}

}  // namespace quil::linux_platform
