#pragma once

#include <string>
#include <string_view>

namespace quil::linux_platform {

/// Starts the application of the desktop entry in that file, in a session of its own, without our
/// standard streams. It is no child of ours. Returns whether the application was started: false
/// when the file is no entry, says that the application was removed, or has nothing that can be
/// started: its program, or what that needs to run, is missing, and so is a service of its name.
/// Waits a few seconds at most; what has not begun by then does not begin later. An application
/// that reads `startupId` (Startup Notification Protocol) learns from it that the user wants to see
/// it now; empty for none.
bool openDesktopEntry(std::string_view path, const std::string& startupId);

}  // namespace quil::linux_platform
