#pragma once

#include <optional>

#include "json/json.h"
#include "platform/platform.h"

namespace quil {

/// The ordinary application windows on screen, front to back, each as the protocol's window entry.
/// An empty list when the platform gives none.
Json windowsList(Platform& platform);

/// The application that has the user's focus; absent when there is none.
std::optional<RunningApplication> frontmostApplication(Platform& platform);

}  // namespace quil
