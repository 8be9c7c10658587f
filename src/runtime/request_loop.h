#pragma once

#include "runtime/runtime.h"

namespace quil {

/// Answers the requests on standard input one at a time, in order, and returns when it ends. A line
/// that is no request is dropped without an answer.
void runRuntimeLoop(Runtime& runtime);

}  // namespace quil
