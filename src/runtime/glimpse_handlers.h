#pragma once

#include "runtime/runtime.h"

/// Glimpse captures: a fixed sequence of views of the frontmost application, one per request. None
/// needs a permission; a missing one shows as empty content.
namespace quil {

/// `startFrontmostGlimpseCapture`: begins (or begins again) the capture "requestId".
void handleStartGlimpseCapture(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `nextGlimpseCaptureUpdate`: the next view of the capture "requestId": text, screenshot, end.
void handleNextGlimpseUpdate(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `cancelGlimpseCapture`: forgets the capture "requestId", if there is one.
void handleCancelGlimpseCapture(Runtime& runtime, std::int64_t id, const Parameters& parameters);

}  // namespace quil
