#pragma once

#include "runtime/runtime.h"

/// Recording the person's own input. None needs the Accessibility or Screen Recording permission.
namespace quil {

/// `startInputRecording`: begins a recording, or lets the one that runs go on. Without the Input
/// Monitoring permission the person is asked for it, and the request fails.
void handleStartInputRecording(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `nextInputEvent`: the oldest record, null when none came within "timeoutMs" (1000 by default).
void handleNextInputEvent(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `stopInputRecording`: ends the recording and answers the records still to be taken.
void handleStopInputRecording(Runtime& runtime, std::int64_t id, const Parameters& parameters);

}  // namespace quil
