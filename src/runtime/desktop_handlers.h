#pragma once

#include "runtime/runtime.h"

/// The methods that say what the runtime may do and what is in front.
namespace quil {

/// `ping`: the permissions, each queried afresh.
void handlePing(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_target`: the frontmost application and window.
void handleTarget(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_windows_list`: the ordinary windows on screen.
void handleWindowsList(Runtime& runtime, std::int64_t id, const Parameters& parameters);

}  // namespace quil
