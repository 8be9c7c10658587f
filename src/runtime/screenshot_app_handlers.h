#pragma once

#include "runtime/runtime.h"

/// The methods that picture the frontmost window, and list and launch applications.
namespace quil {

/// `desktop_screenshot`: the window's picture, "" when there is none. Needs Screen Recording.
void handleScreenshot(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_apps_list`: the catalogue of running and installed applications.
void handleAppsList(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_launch_app`: opens the application named "appId". The answer's target is that of the
/// moment, which the new application may not have become yet.
void handleLaunchApp(Runtime& runtime, std::int64_t id, const Parameters& parameters);

}  // namespace quil
