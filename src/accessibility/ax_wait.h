#pragma once

#include <cstdint>
#include <string>

#include "platform/platform.h"

namespace quil {

/// What `waitForAxChange` saw last.
struct AxWaitOutcome {
    /// Whether the revision is another than the one that was given.
    bool changed = false;
    /// The revision of the frontmost application's tree; empty when no application is frontmost.
    std::string revision;
};

/// Waits until the frontmost application's tree has another revision than the one given and has
/// kept it for `quietMs`, for `timeoutMs` at the most. The tree is observed at the beginning, when
/// the platform notices what may be a change, and at the end; no observation becomes the last
/// snapshot, so tokens keep their meaning.
AxWaitOutcome waitForAxChange(Platform& platform, const std::string& revision,
                              std::int64_t timeoutMs, std::int64_t quietMs);

}  // namespace quil
