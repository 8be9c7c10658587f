#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

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

/// The desktop entry that a running application comes from.
struct MatchedEntry {
    /// The desktop file id, such as "org.gnome.Calculator.desktop".
    std::string id;
    std::string localizedName;
};

/// Finds the desktop entries of running applications. Nothing on Linux says for sure which entry a
/// window comes from, so that the surest hints are tried first: the entry that its launcher noted
/// in the process's environment, the sandbox that it runs in, the id that the window carries, its
/// class, and last the program that the process runs.
class DesktopEntryMatcher {
  public:
    /// Nothing when no installed entry fits.
    std::optional<MatchedEntry> find(const ApplicationHints& hints);

    /// Changes when entries have been installed or removed.
    const std::string& installedEntriesStamp();

  private:
    struct Candidate {
        std::string id;
        bool isShown = false;
        std::size_t argumentCount = 0;
        bool isBetterThan(const Candidate& other) const;
    };
    using Index = std::map<std::string, Candidate, std::less<>>;

    std::string currentStamp() const;
    void indexFolder(const std::string& folder, const std::string& idPrefix, int depth);
    void indexEntry(const std::string& path, const std::string& id);
    static void offer(Index& index, const std::string& key, const Candidate& candidate);

    std::optional<MatchedEntry> findByWindow(const ApplicationHints& hints) const;
    std::optional<MatchedEntry> findByProgram(std::int32_t pid) const;

    std::string stamp_;
    std::vector<std::string> folders_;  // all folders that were looked through
    std::set<std::string> ids_;
    Index byWindowClass_;  // StartupWMClass, lower case
    Index byLastName_;     // "calculator" of "org.gnome.Calculator.desktop", lower case
    Index byProgram_;      // the file name of the program that the entry starts
};

}  // namespace quil::linux_platform
