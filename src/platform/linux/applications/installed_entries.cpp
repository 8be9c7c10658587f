#include "platform/linux/applications/installed_entries.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <tuple>

#include "platform/linux/applications/desktop_entries.h"
#include "platform/linux/applications/program_files.h"
#include "platform/linux/applications/program_name.h"
#include "text/characters.h"

namespace quil::linux_platform {

bool InstalledEntry::isBetterThan(const InstalledEntry& other) const {
    // It is not hidden, and it starts the program plainly and not in some special mode.
    return std::tuple(!isShown, arguments.size(), id.size(), id) <
           std::tuple(!other.isShown, other.arguments.size(), other.id.size(), other.id);
}

std::string InstalledEntry::programPath(bool isInterpreted) const {
    const bool isLocal = isInterpreted && !folder.empty() && program.find('/') == std::string::npos;
    return programFile(isLocal ? "./" + program : program, folder.empty() ? "/" : folder);
}

bool InstalledEntry::runs(const RunProgram& running) const {
    if (fileName(program) != running.name) return false;
    const std::string path = programPath(running.isInterpreted);
    if (running.isInterpreted) return path == running.path;
    // Packages call a script that starts a program by the program's name.
    return path == running.path || path.empty() || running.path.empty() || isScript(path);
}

std::size_t InstalledEntry::argumentsSharedWith(const RunProgram& running) const {
    const auto& given = running.commandLine;
    const bool areShared = std::ranges::all_of(arguments, [&](const std::string& argument) {
        return std::ranges::find(given, argument) != given.end();
    });
    return areShared ? arguments.size() : 0;
}

std::string InstalledEntries::currentStamp() const {
    std::string stamp;
    for (const std::string& folder : folders_) {
        struct stat status {};
        if (stat(folder.c_str(), &status) != 0) continue;
        stamp += folder + ':' + std::to_string(status.st_mtim.tv_sec) + '.' +
                 std::to_string(status.st_mtim.tv_nsec) + '\n';
    }
    return stamp;
}

const std::string& InstalledEntries::stamp() {
    if (!stamp_.empty() && currentStamp() == stamp_) return stamp_;
    folders_.clear();
    ids_.clear();
    byWindowClass_.clear();
    byFoldedWindowClass_.clear();
    byProgram_.clear();
    for (const std::string& folder : desktopEntryFolders()) indexFolder(folder, "", 0);
    stamp_ = currentStamp();
    return stamp_;
}

void InstalledEntries::indexFolder(const std::string& folder, const std::string& idPrefix,
                                   int depth) {
    folders_.push_back(folder);
    std::error_code error;
    for (const auto& file : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = file.path().filename().string();
        if (file.is_directory(error)) {
            if (depth < kDeepestEntryFolder) {
                indexFolder(file.path(), idPrefix + name + '-', depth + 1);
            }
        } else if (isDesktopEntryName(name)) {
            indexEntry(file.path(), idPrefix + name);
        }
    }
}

void InstalledEntries::indexEntry(const std::string& path, const std::string& id) {
    // An earlier folder's entry replaces a later one's, even one that only says "removed".
    if (!ids_.insert(id).second) return;
    const DesktopEntry entry = readDesktopEntry(path);
    if (!entry) return;
    const auto command = commandOf(entry);
    const GlibText folder(g_desktop_app_info_get_string(entry.get(), G_KEY_FILE_DESKTOP_KEY_PATH));
    const InstalledEntry candidate{id,
                                   g_app_info_should_show(G_APP_INFO(entry.get())) != 0,
                                   {command.begin() + !command.empty(), command.end()},
                                   programOf(command),
                                   folder ? validUtf8(folder.get()) : ""};
    const std::string windowClass = windowClassOf(entry);
    if (!windowClass.empty()) {
        byWindowClass_.emplace(windowClass, candidate);
        byFoldedWindowClass_.emplace(lowercased(windowClass), candidate);
    }
    if (!candidate.program.empty()) {
        byProgram_.emplace(std::string(fileName(candidate.program)), candidate);
    }
}

const InstalledEntry* bestEntry(const InstalledEntries::Index& index, std::string_view key,
                                const std::vector<RunProgram>& programs, bool mustRun) {
    const InstalledEntry* found = nullptr;
    bool foundRuns = false;
    const auto [first, last] = index.equal_range(key);
    for (auto entry = first; entry != last; ++entry) {
        const InstalledEntry& candidate = entry->second;
        const bool runs = std::ranges::any_of(
            programs, [&](const RunProgram& program) { return candidate.runs(program); });
        if (mustRun && !runs) continue;
        if (!found || (runs && !foundRuns) ||
            (runs == foundRuns && candidate.isBetterThan(*found))) {
            found = &candidate;
            foundRuns = runs;
        }
    }
    return found;
}

}  // namespace quil::linux_platform
