#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

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

/// A program that a process may be said to run.
struct RunProgram {
    std::string name;
    /// Empty when it is no file, such as a Java class, or not known.
    std::string path;
    /// An interpreter runs it.
    bool isInterpreted = false;
};

/// Finds the desktop entries of running applications. Nothing on Linux says for sure which entry a
/// window comes from, so that the surest hints are tried first: the entry that its launcher noted,
/// the sandbox that it runs in, the id that the window carries, its class as entries name it, names
/// that are only alike, and last the program that the process runs.
class DesktopEntryMatcher {
  public:
    /// Nothing when no installed entry fits.
    std::optional<MatchedEntry> find(const ApplicationHints& hints, const IsOnDisplay& isOnDisplay);

    /// Changes when entries have been installed or removed.
    const std::string& installedEntriesStamp();

  private:
    struct Candidate {
        std::string id;
        bool isShown = false;
        std::size_t argumentCount = 0;
        /// What its command starts, as it is written there, and the folder that this is done in.
        std::string program;
        std::string folder;
        /// Which of several entries the user sees as the application itself.
        bool isBetterThan(const Candidate& other) const;
        bool runs(const RunProgram& running) const;
        /// The file of the program; empty when it is none.
        std::string programPath(bool isInterpreted) const;
    };
    using Index = std::multimap<std::string, Candidate, std::less<>>;
    using Programs = std::vector<RunProgram>;

    std::string currentStamp() const;
    void indexFolder(const std::string& folder, const std::string& idPrefix, int depth);
    void indexEntry(const std::string& path, const std::string& id);

    static const Candidate* best(const Index& index, std::string_view key, const Programs& programs,
                                 bool mustRun);
    std::optional<MatchedEntry> namedByWindow(const ApplicationHints& hints,
                                              const Programs& programs) const;
    std::optional<MatchedEntry> withSimilarName(const ApplicationHints& hints,
                                                const Programs& programs) const;
    std::optional<MatchedEntry> ofProgram(const Programs& programs) const;

    std::string stamp_;
    std::vector<std::string> folders_;  // all folders that were looked through
    std::set<std::string> ids_;
    Index byWindowClass_;        // StartupWMClass
    Index byFoldedWindowClass_;  // the same, lower case
    Index byProgram_;            // the file name of the program that the entry starts
};

}  // namespace quil::linux_platform
