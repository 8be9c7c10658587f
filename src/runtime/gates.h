#pragma once

#include <cstdint>

#include "runtime/runtime.h"

/// The permission tests that come first in a handler, before any parameter is read. They only
/// query, for every request, and never ask the user.
namespace quil {

bool accessibilityGranted(Runtime& runtime);
bool screenRecordingGranted(Runtime& runtime);

/// True when the permission is granted. Otherwise the response has been written and the handler
/// stops.
bool requireAccessibility(Runtime& runtime, std::int64_t id);
bool requireScreenRecording(Runtime& runtime, std::int64_t id);

}  // namespace quil
