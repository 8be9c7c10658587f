#include "platform/linux/applications/launch_notes.h"

#include <cstdlib>

#include "platform/linux/applications/processes.h"
#include "platform/linux/applications/program_name.h"

namespace quil::linux_platform {
namespace {

/// So many wrappers are followed.
constexpr int kMaximumWrappers = 16;

}  // namespace

LaunchNote launchNoteOf(std::int32_t pid, const IsOnDisplay& isOnDisplay) {
    const std::string noted = environmentVariableOf(pid, "GIO_LAUNCHED_DESKTOP_FILE_PID");
    const std::int32_t started = std::atoi(noted.c_str());
    if (started <= 0) return {};
    const LaunchNote note{environmentVariableOf(pid, "GIO_LAUNCHED_DESKTOP_FILE")};
    if (started == pid) return note;

    const auto session = sessionOf(pid);
    auto ancestor = parentOf(pid);
    for (int i = 0; ancestor && sessionOf(*ancestor) == session && i < kMaximumWrappers; ++i) {
        const bool isWrapper = isInterpreter(fileName(executableOf(*ancestor).value_or(""))) &&
                               !isOnDisplay(*ancestor);
        if (!isWrapper) return {};
        if (*ancestor == started) return note;
        ancestor = parentOf(*ancestor);
    }
    if (session != started || !hasEnded(started)) return {};
    return {note.file, true};
}

}  // namespace quil::linux_platform
