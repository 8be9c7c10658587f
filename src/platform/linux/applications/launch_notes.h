#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace quil::linux_platform {

/// Whether a process is a client of the display.
using IsOnDisplay = std::function<bool(std::int32_t pid)>;

/// What a launcher noted in the environment of the process that it started.
struct LaunchNote {
    /// The file of the desktop entry; empty when nothing was noted.
    std::string file;
    /// The process that was started has ended; it was the first of this one's session.
    bool hasEnded = false;
};

/// The note for this process: GIO and the desktops that use it leave one with the id of the process
/// that they start. What that starts inherits the note, and is meant by it as long as only wrappers
/// are in between: interpreters and launchers that are not on the display themselves, all in the
/// same session, as nothing is that was started from a terminal.
LaunchNote launchNoteOf(std::int32_t pid, const IsOnDisplay& isOnDisplay);

}  // namespace quil::linux_platform
