#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace quil::linux_platform {

/// A program that a process may be said to run.
struct RunProgram {
    std::string name;
    /// Empty when it is no file, such as a Java class, or not known.
    std::string path;
    /// An interpreter runs it.
    bool isInterpreted = false;
    /// The command line of its process.
    std::vector<std::string> commandLine{};
};

/// What is compared of an installed desktop entry.
struct InstalledEntry {
    std::string id;
    bool isShown = false;
    /// The words of its command after the first one.
    std::vector<std::string> arguments;
    /// What its command starts, as it is written there, and the folder that this is done in.
    std::string program;
    std::string folder;

    /// Which of several entries the user sees as the application itself.
    bool isBetterThan(const InstalledEntry& other) const;
    bool runs(const RunProgram& running) const;
    /// How many arguments it has if the process was given all of them, else 0: they distinguish the
    /// entries of one program, such as an office suite.
    std::size_t argumentsSharedWith(const RunProgram& running) const;
    /// The file of the program; empty when it is none.
    std::string programPath(bool isInterpreted) const;
};

/// The installed desktop entries, read again when their folders have changed.
class InstalledEntries {
  public:
    using Index = std::multimap<std::string, InstalledEntry, std::less<>>;

    /// Reads them again if need be. Changes when entries have been installed or removed.
    const std::string& stamp();

    /// By StartupWMClass.
    const Index& byWindowClass() const { return byWindowClass_; }
    /// The same, in lower case.
    const Index& byFoldedWindowClass() const { return byFoldedWindowClass_; }
    /// By the file name of the program that the entry starts.
    const Index& byProgram() const { return byProgram_; }

  private:
    std::string currentStamp() const;
    void indexFolder(const std::string& folder, const std::string& idPrefix, int depth);
    void indexEntry(const std::string& path, const std::string& id);

    std::string stamp_;
    std::vector<std::string> folders_;  // all folders that were looked through
    std::set<std::string> ids_;
    Index byWindowClass_;
    Index byFoldedWindowClass_;
    Index byProgram_;
};

/// The best of the entries with that key: one that one of the programs runs, if there is one, and
/// of several the one that the user sees as the application. Null when there is none, or `mustRun`
/// and it is none of the programs'.
const InstalledEntry* bestEntry(const InstalledEntries::Index& index, std::string_view key,
                                const std::vector<RunProgram>& programs, bool mustRun);

}  // namespace quil::linux_platform
