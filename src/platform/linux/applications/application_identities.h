#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "platform/linux/applications/desktop_entry_matcher.h"
#include "platform/workspace.h"

namespace quil::linux_platform {

/// Who the processes are that windows belong to. What a process is does not change while it runs,
/// so an identity is kept until the process ends or entries are installed or removed.
class ApplicationIdentities {
  public:
    /// The application that this process runs. Its name is that of its desktop entry, else the
    /// class of its window, else the name of the process.
    RunningApplication identify(const ApplicationHints& hints);

    /// The last identity found for this process; nothing when there is none or it holds no longer.
    std::optional<RunningApplication> identified(std::int32_t pid);

  private:
    struct Identity {
        ApplicationHints hints;
        std::optional<std::uint64_t> startTime;
        RunningApplication application;
    };
    void forgetOutdated();

    DesktopEntryMatcher matcher_;
    std::string installedEntries_;                 // the stamp that the identities hold for
    std::map<std::int32_t, Identity> identities_;  // by process id
};

}  // namespace quil::linux_platform
