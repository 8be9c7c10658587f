#pragma once

#include <cstdint>
#include <memory>

#include "accessibility/ax_snapshot.h"
#include "platform/platform.h"
#include "recording/input_recorder.h"
#include "runtime/glimpse_sessions.h"
#include "runtime/request.h"
#include "runtime/responses.h"

namespace quil {

/// Everything that lives as long as the process, and what a handler works with. Used from the
/// request loop's thread alone.
struct Runtime {
    explicit Runtime(Platform& platformToUse);

    Platform& platform;
    Responses responses;
    /// The last accessibility snapshot taken, against which element tokens are checked; null until
    /// the first one.
    LastAxSnapshot lastAxSnapshot;
    GlimpseSessions glimpseSessions;
    /// The one recorder. Its recording ends with the runtime.
    std::shared_ptr<InputRecorder> sharedInputRecorder;
};

/// Handles one request: writes exactly one response for `id`.
using Handler = void (*)(Runtime& runtime, std::int64_t id, const Parameters& parameters);

}  // namespace quil
