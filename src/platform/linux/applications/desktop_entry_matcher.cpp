#include "platform/linux/applications/desktop_entry_matcher.h"

#include <algorithm>
#include <filesystem>

#include "platform/linux/applications/desktop_entries.h"
#include "platform/linux/applications/processes.h"
#include "platform/linux/applications/program_files.h"
#include "platform/linux/applications/program_name.h"
#include "text/characters.h"

namespace quil::linux_platform {
namespace {

std::string withSuffix(const std::string& id) {
    return id.ends_with(kDesktopEntrySuffix) ? id : id + std::string(kDesktopEntrySuffix);
}

/// An entry's id is its path below its "applications" folder, with dashes for slashes. Elsewhere it
/// has only its file name.
std::string idOfFile(const std::string& path) {
    for (const std::string& folder : desktopEntryFolders()) {
        if (!path.starts_with(folder + '/')) continue;
        std::string id = path.substr(folder.size() + 1);
        std::replace(id.begin(), id.end(), '/', '-');
        return id;
    }
    return std::string(fileName(path));
}

/// What can be launched again under the name that it is given: an entry that is not installed, or
/// is replaced by one that does something else, is named by its path.
std::string launchableIdOf(const std::string& path, const DesktopEntry& entry) {
    std::string id = idOfFile(path);
    const auto installed = findDesktopEntry(id);
    const bool stands =
        installed &&
        (*installed == path || commandLineOf(readDesktopEntry(*installed)) == commandLineOf(entry));
    return stands ? id : path;
}

std::optional<MatchedEntry> entryInFile(const std::string& path) {
    const DesktopEntry entry = isDesktopEntryName(path) ? readDesktopEntry(path) : nullptr;
    if (!entry) return {};
    return MatchedEntry{launchableIdOf(path, entry), localizedNameOf(entry).value_or("")};
}

std::optional<MatchedEntry> entryWithId(const std::string& id) {
    const auto path = findDesktopEntry(id);
    const DesktopEntry entry = path ? readDesktopEntry(*path) : nullptr;
    if (!entry) return {};
    return MatchedEntry{id, localizedNameOf(entry).value_or("")};
}

std::optional<MatchedEntry> with(Evidence evidence, std::optional<MatchedEntry> entry) {
    if (entry) entry->evidence = evidence;
    return entry;
}

/// Whether what the entry starts only starts something else, as far as that can be seen.
bool startsWrapper(const DesktopEntry& entry) {
    const auto words = commandOf(entry);
    return !words.empty() &&
           (isInterpreter(fileName(words.front())) || isScript(programFile(words.front(), "/")));
}

struct LaunchedEntry {
    MatchedEntry entry;
    std::string windowClass;
};

std::optional<LaunchedEntry> launchedEntry(std::int32_t pid, const IsOnDisplay& isOnDisplay) {
    const LaunchNote note = launchNoteOf(pid, isOnDisplay);
    const DesktopEntry entry =
        isDesktopEntryName(note.file) ? readDesktopEntry(note.file) : nullptr;
    // A program that has ended may have started others, but is it what it was launched for?
    if (!entry || (note.hasEnded && !startsWrapper(entry))) return {};
    return LaunchedEntry{{launchableIdOf(note.file, entry), localizedNameOf(entry).value_or("")},
                         windowClassOf(entry)};
}

/// An application can have more entries than the one that was launched, each with a class of its
/// own for its windows.
bool mayBeOfOther(const LaunchedEntry& launched, const ApplicationHints& hints) {
    const bool hasClass = !hints.instanceName.empty() || !hints.className.empty();
    const std::string expected = lowercased(launched.windowClass);
    return !expected.empty() && hasClass && expected != lowercased(hints.instanceName) &&
           expected != lowercased(hints.className);
}

std::optional<MatchedEntry> sandboxedEntry(std::int32_t pid) {
    if (const std::string id = flatpakIdOf(pid); !id.empty()) return entryWithId(withSuffix(id));
    // Snaps carry the file of their entry; programs that they start from elsewhere inherit it.
    if (!executableOf(pid).value_or("").starts_with("/snap/")) return {};
    return entryInFile(environmentVariableOf(pid, "BAMF_DESKTOP_FILE_HINT"));
}

/// What the process runs: its executable, by its own name and the one that it was called by, or
/// what an interpreter was given.
std::vector<RunProgram> programsOf(std::int32_t pid) {
    const auto arguments = argumentsOf(pid);
    const std::string executable = executableOf(pid).value_or("");
    const std::string called(arguments.empty() ? "" : fileName(arguments.front()));
    const std::string own(fileName(executable));
    if (!isInterpreter(own.empty() ? called : own)) {
        std::vector<RunProgram> programs;
        if (!own.empty()) programs.push_back({own, executable, false, arguments});
        if (!called.empty() && called != own) {
            programs.push_back({called, executable, false, arguments});
        }
        return programs;
    }
    const std::string program = programOf(arguments);
    if (program.empty()) return {};
    // An interpreter takes a plain name for a file where it was started.
    const bool isName = program.find('/') == std::string::npos;
    const std::string folder = workingFolderOf(pid).value_or("/");
    return {{std::string(fileName(program)), programFile(isName ? "./" + program : program, folder),
             true, arguments}};
}

/// Whether the program lies in a folder of that name, as the parts of an application do.
bool isInFolder(const RunProgram& program, const std::string& folder) {
    const std::filesystem::path path =
        std::filesystem::path(lowercased(program.path)).parent_path();
    return std::find(path.begin(), path.end(), folder) != path.end();
}

/// A script can call its windows anything. Names that are not made to be unique, as
/// "org.gnome.Calculator" is, count only of what belongs to something of that name.
bool mayBeNamed(const std::string& name, const std::vector<RunProgram>& programs) {
    if (std::count(name.begin(), name.end(), '.') >= 2) return true;
    return std::ranges::all_of(programs, [&](const RunProgram& program) {
        return !program.isInterpreted || isInFolder(program, lowercased(name));
    });
}

/// Whether the entry starts a binary of its own, which is none of these.
bool startsOther(const std::string& entryId, const std::vector<RunProgram>& programs) {
    const auto path = findDesktopEntry(entryId);
    const auto words = path ? commandOf(readDesktopEntry(*path)) : std::vector<std::string>();
    const std::string program = words.empty() ? "" : programFile(words.front(), "/");
    return !program.empty() && !isScript(program) && !isInterpreter(fileName(program)) &&
           !programs.empty() && std::ranges::none_of(programs, [&](const RunProgram& running) {
               return running.path == program || areOfOneApplication(running.path, program);
           });
}

/// The window's names, the instance first: it is the more specific of the two, such as a browser's
/// installed web page.
std::vector<std::string> namesOf(const ApplicationHints& hints) {
    std::vector<std::string> names;
    for (const std::string& name : {hints.instanceName, hints.className}) {
        if (!name.empty() && !isInterpreter(name)) names.push_back(name);
    }
    return names;
}

}  // namespace

std::optional<MatchedEntry> DesktopEntryMatcher::namedByWindow(const ApplicationHints& hints,
                                                               const Programs& programs) const {
    if (hints.desktopFile.starts_with('/')) {
        if (auto entry = entryInFile(hints.desktopFile)) return entry;
    } else if (!hints.desktopFile.empty()) {
        if (auto entry = entryWithId(withSuffix(hints.desktopFile))) return entry;
    }
    if (!hints.gtkApplicationId.empty()) {
        if (auto entry = entryWithId(withSuffix(hints.gtkApplicationId))) return entry;
    }
    for (const std::string& name : namesOf(hints)) {
        const InstalledEntry* found = bestEntry(installed_.byWindowClass(), name, programs, false);
        if (auto entry = found ? entryWithId(found->id) : std::nullopt) return entry;
    }
    for (const std::string& name : namesOf(hints)) {
        if (!mayBeNamed(name, programs)) continue;
        if (auto entry = entryWithId(withSuffix(name))) return entry;
    }
    return {};
}

std::optional<MatchedEntry> DesktopEntryMatcher::withSimilarName(const ApplicationHints& hints,
                                                                 const Programs& programs) const {
    for (const std::string& name : namesOf(hints)) {
        const InstalledEntry* found =
            bestEntry(installed_.byFoldedWindowClass(), lowercased(name), programs, false);
        if (auto entry = found ? entryWithId(found->id) : std::nullopt) return entry;
    }
    for (const std::string& name : namesOf(hints)) {
        const std::string id = withSuffix(lowercased(name));
        if (!mayBeNamed(name, programs) || startsOther(id, programs)) continue;
        if (auto entry = entryWithId(id)) return entry;
    }
    return {};
}

std::optional<MatchedEntry> DesktopEntryMatcher::ofProgram(const Programs& programs) const {
    for (const RunProgram& program : programs) {
        const InstalledEntry* found =
            bestEntry(installed_.byProgram(), program.name, {program}, true);
        if (auto entry = found ? entryWithId(found->id) : std::nullopt) return entry;
    }
    // A part of an application that another part has started.
    const InstalledEntry* found = nullptr;
    std::size_t foundShares = 0;
    for (const auto& [name, candidate] : installed_.byProgram()) {
        const std::size_t shares =
            programs.empty() ? 0 : candidate.argumentsSharedWith(programs.front());
        const bool isBetter = !found || shares > foundShares ||
                              (shares == foundShares && candidate.isBetterThan(*found));
        if (!isBetter) continue;
        const std::string path = candidate.programPath(false);
        const bool fits = std::ranges::any_of(programs, [&](const RunProgram& program) {
            return areOfOneApplication(path, program.path);
        });
        if (!fits) continue;
        found = &candidate;
        foundShares = shares;
    }
    return found ? entryWithId(found->id) : std::nullopt;
}

std::optional<MatchedEntry> DesktopEntryMatcher::find(const ApplicationHints& hints,
                                                      const IsOnDisplay& isOnDisplay) {
    installed_.stamp();
    const auto launched = launchedEntry(hints.pid, isOnDisplay);
    if (launched && !mayBeOfOther(*launched, hints)) {
        return with(Evidence::statement, launched->entry);
    }
    if (auto entry = sandboxedEntry(hints.pid)) return with(Evidence::statement, std::move(entry));
    const Programs programs = programsOf(hints.pid);
    if (auto entry = namedByWindow(hints, programs)) {
        return with(Evidence::statement, std::move(entry));
    }
    if (auto entry = withSimilarName(hints, programs))
        return with(Evidence::similarName, std::move(entry));
    return with(Evidence::program, launched ? launched->entry : ofProgram(programs));
}

}  // namespace quil::linux_platform
