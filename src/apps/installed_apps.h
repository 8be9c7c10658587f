#pragma once

#include <cstddef>

#include "json/json.h"
#include "platform/platform.h"

namespace quil {

/// The most applications that the catalogue holds.
inline constexpr std::size_t kMaximumApps = 500;

/// The catalogue of applications, as it is now: the running ones with windows, and the bundles in
/// the platform's application folders, one record each, sorted by name and cut to `kMaximumApps`. A
/// record's "appId" is what `launchApp` accepts. An application that is both running and installed
/// is listed as running.
Json installedApps(Platform& platform);

}  // namespace quil
