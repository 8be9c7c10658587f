#pragma once

#include <string_view>

namespace quil::linux_platform {

/// Starts the application of the desktop entry in that file, in a session of its own, without our
/// standard streams. It is nobody's child to wait for. Returns whether the application was started:
/// false when the file is no entry, says that the application was removed, or its program is
/// missing. Waits a few seconds at most.
bool openDesktopEntry(std::string_view path);

}  // namespace quil::linux_platform
