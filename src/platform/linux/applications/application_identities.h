#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/applications/desktop_entry_matcher.h"
#include "platform/workspace.h"

namespace quil::linux_platform {

/// Who the processes are that windows belong to. What a process is does not change while it runs,
/// so an identity is kept until the process ends or entries are installed or removed.
class ApplicationIdentities {
  public:
    /// The desktop entry of a window that gives these hints; nothing when none fits.
    std::optional<MatchedEntry> entryOf(const ApplicationHints& hints,
                                        const IsOnDisplay& isOnDisplay);

    /// The application that this process runs, of that entry if it has one. Without one, its name
    /// is the class of its window, else the name of the process.
    RunningApplication identify(const ApplicationHints& hints,
                                const std::optional<MatchedEntry>& entry);

    /// The last application that this process was said to run; nothing when there is none or it
    /// holds no longer.
    std::optional<RunningApplication> identified(std::int32_t pid);

  private:
    struct Identity {
        std::optional<std::uint64_t> startTime;
        /// One process can show windows of several entries.
        std::vector<std::pair<ApplicationHints, std::optional<MatchedEntry>>> entries;
        std::optional<RunningApplication> application;
    };
    /// What is known of the process that has this id now.
    Identity& identityOf(std::int32_t pid);
    void forgetOutdated();

    DesktopEntryMatcher matcher_;
    std::string installedEntries_;                 // the stamp that the identities hold for
    std::map<std::int32_t, Identity> identities_;  // by process id
};

}  // namespace quil::linux_platform
