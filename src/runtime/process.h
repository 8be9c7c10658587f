#pragma once

#include "platform/platform.h"

namespace quil {

/// Runs the runtime on this platform until standard input ends: the request loop on a thread of its
/// own, the main thread in its run loop. Returns the exit status of the process.
int runProcess(Platform& platform);

}  // namespace quil
