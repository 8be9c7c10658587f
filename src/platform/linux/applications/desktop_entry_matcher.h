#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/applications/installed_entries.h"
#include "platform/linux/applications/launch_notes.h"

namespace quil::linux_platform {

/// What a process and its window say that may lead to a desktop entry. Empty means unknown.
struct ApplicationHints {
    std::int32_t pid = 0;
    /// The entry that the window itself names ("_KDE_NET_WM_DESKTOP_FILE", "_BAMF_DESKTOP_FILE"):
    /// an id, with or without its ending, or a path.
    std::string desktopFile;
    std::string gtkApplicationId;
    std::string instanceName;
    std::string className;
    bool operator==(const ApplicationHints&) const = default;
};

/// What says that an entry is the one, the weakest first.
enum class Evidence {
    /// The program that the process runs, whatever its windows are.
    program,
    /// The window's names, which are like the entry's.
    similarName,
    /// The launcher, the sandbox or the window itself.
    statement,
};

/// The desktop entry that a running application comes from.
struct MatchedEntry {
    /// The desktop file id, such as "org.gnome.Calculator.desktop"; the file's path when no
    /// installed entry with that id stands for it.
    std::string id;
    std::string localizedName;
    Evidence evidence = Evidence::program;
};

/// Finds the desktop entries of running applications. Nothing on Linux says for sure which entry a
/// window comes from, so that the most certain hints are tried first: the entry that its launcher
/// noted, the sandbox that it runs in, the id that the window carries, its class as entries name
/// it, names that are only alike, and last the program that the process runs.
class DesktopEntryMatcher {
  public:
    /// Nothing when no installed entry fits.
    std::optional<MatchedEntry> find(const ApplicationHints& hints, const IsOnDisplay& isOnDisplay);

    /// Changes when entries have been installed or removed.
    const std::string& installedEntriesStamp() { return installed_.stamp(); }

  private:
    using Programs = std::vector<RunProgram>;

    std::optional<MatchedEntry> namedByWindow(const ApplicationHints& hints,
                                              const Programs& programs) const;
    std::optional<MatchedEntry> withSimilarName(const ApplicationHints& hints,
                                                const Programs& programs) const;
    std::optional<MatchedEntry> ofProgram(const Programs& programs) const;

    InstalledEntries installed_;
};

}  // namespace quil::linux_platform
