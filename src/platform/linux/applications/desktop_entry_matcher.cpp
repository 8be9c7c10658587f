#include "platform/linux/applications/desktop_entry_matcher.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <tuple>

#include "platform/linux/applications/desktop_entries.h"
#include "platform/linux/applications/processes.h"
#include "platform/linux/applications/program_name.h"
#include "text/characters.h"

namespace quil::linux_platform {
namespace {

/// Folders below "applications" are few and flat; links could make them endless.
constexpr int kMaximumDepth = 4;

std::string textOrEmpty(const char* text) {
    return text ? validUtf8(text) : std::string();
}

std::string withSuffix(const std::string& id) {
    return id.ends_with(kDesktopEntrySuffix) ? id : id + std::string(kDesktopEntrySuffix);
}

std::string_view withoutSuffix(std::string_view id) {
    return id.substr(0, id.size() - kDesktopEntrySuffix.size());
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

std::optional<MatchedEntry> entryInFile(const std::string& path, std::string id) {
    const DesktopEntry entry = readDesktopEntry(path);
    if (!entry) return {};
    return MatchedEntry{std::move(id), localizedNameOf(entry).value_or("")};
}

std::optional<MatchedEntry> entryInFile(const std::string& path) {
    return entryInFile(path, idOfFile(path));
}

std::optional<MatchedEntry> entryWithId(const std::string& id) {
    const auto path = findDesktopEntry(id);
    return path ? entryInFile(*path, id) : std::nullopt;
}

/// GIO and the desktops that use it note the entry in the environment of the process that they
/// start. What that process starts inherits the note; the process id in it tells them apart.
std::optional<MatchedEntry> launchedEntry(std::int32_t pid) {
    if (environmentVariableOf(pid, "GIO_LAUNCHED_DESKTOP_FILE_PID") != std::to_string(pid)) {
        return {};
    }
    return entryInFile(environmentVariableOf(pid, "GIO_LAUNCHED_DESKTOP_FILE"));
}

std::optional<MatchedEntry> sandboxedEntry(std::int32_t pid) {
    if (const std::string id = flatpakIdOf(pid); !id.empty()) return entryWithId(withSuffix(id));
    // Snaps carry the file of their entry; programs that they start from elsewhere inherit it.
    if (!executableOf(pid).value_or("").starts_with("/snap/")) return {};
    return entryInFile(environmentVariableOf(pid, "BAMF_DESKTOP_FILE_HINT"));
}

/// The words that the entry starts its program with, file and URL place holders left out.
std::vector<std::string> commandOf(const DesktopEntry& entry) {
    const char* line = g_app_info_get_commandline(G_APP_INFO(entry.get()));
    int count = 0;
    char** parsed = nullptr;
    if (!line || !g_shell_parse_argv(line, &count, &parsed, nullptr)) return {};
    std::vector<std::string> words(parsed, parsed + count);
    g_strfreev(parsed);
    std::erase_if(words, [](const std::string& w) { return w.size() == 2 && w.front() == '%'; });
    return words;
}

template <typename Index>
std::optional<MatchedEntry> lookUp(const Index& index, std::string_view key) {
    const auto found = index.find(key);
    return found == index.end() ? std::nullopt : entryWithId(found->second.id);
}

/// The file names that a process's program may go by: that of its executable and the one that it
/// was called by.
std::vector<std::string> programNamesOf(std::int32_t pid) {
    const auto arguments = argumentsOf(pid);
    const std::size_t word = programWord(arguments);
    std::vector<std::string> names;
    const std::string executable(fileName(executableOf(pid).value_or("")));
    if (!executable.empty() && !isInterpreter(executable)) names.push_back(executable);
    if (word < arguments.size()) names.emplace_back(fileName(arguments[word]));
    return names;
}

}  // namespace

bool DesktopEntryMatcher::Candidate::isBetterThan(const Candidate& other) const {
    // Of several entries for one program the user sees one as the application itself: it is not
    // hidden, and it starts the program plainly and not in some special mode.
    return std::tuple(!isShown, argumentCount, id.size(), id) <
           std::tuple(!other.isShown, other.argumentCount, other.id.size(), other.id);
}

void DesktopEntryMatcher::offer(Index& index, const std::string& key, const Candidate& candidate) {
    if (key.empty()) return;
    const auto [existing, isNew] = index.emplace(key, candidate);
    if (!isNew && candidate.isBetterThan(existing->second)) existing->second = candidate;
}

std::string DesktopEntryMatcher::currentStamp() const {
    std::string stamp;
    for (const std::string& folder : folders_) {
        struct stat status {};
        if (stat(folder.c_str(), &status) != 0) continue;
        stamp += folder + ':' + std::to_string(status.st_mtim.tv_sec) + '.' +
                 std::to_string(status.st_mtim.tv_nsec) + '\n';
    }
    return stamp;
}

const std::string& DesktopEntryMatcher::installedEntriesStamp() {
    if (!stamp_.empty() && currentStamp() == stamp_) return stamp_;
    folders_.clear();
    ids_.clear();
    byWindowClass_.clear();
    byLastName_.clear();
    byProgram_.clear();
    for (const std::string& folder : desktopEntryFolders()) indexFolder(folder, "", 0);
    stamp_ = currentStamp();
    return stamp_;
}

void DesktopEntryMatcher::indexFolder(const std::string& folder, const std::string& idPrefix,
                                      int depth) {
    folders_.push_back(folder);
    std::error_code error;
    for (const auto& file : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = file.path().filename().string();
        if (file.is_directory(error)) {
            if (depth < kMaximumDepth) indexFolder(file.path(), idPrefix + name + '-', depth + 1);
        } else if (isDesktopEntryName(name)) {
            indexEntry(file.path(), idPrefix + name);
        }
    }
}

void DesktopEntryMatcher::indexEntry(const std::string& path, const std::string& id) {
    // An earlier folder's entry replaces a later one's, even one that only says "removed".
    if (!ids_.insert(id).second) return;
    const DesktopEntry entry = readDesktopEntry(path);
    if (!entry) return;
    const auto command = commandOf(entry);
    const Candidate candidate{id, g_app_info_should_show(G_APP_INFO(entry.get())) != 0,
                              command.size()};
    offer(byWindowClass_,
          lowercased(textOrEmpty(g_desktop_app_info_get_startup_wm_class(entry.get()))), candidate);
    const std::string_view name = withoutSuffix(id);
    if (candidate.isShown) {
        offer(byLastName_, lowercased(name.substr(name.rfind('.') + 1)), candidate);
    }
    const std::size_t word = programWord(command);
    if (word < command.size()) {
        offer(byProgram_, std::string(fileName(validUtf8(command[word]))), candidate);
    }
}

std::optional<MatchedEntry> DesktopEntryMatcher::findByWindow(const ApplicationHints& hints) const {
    // The instance goes first: it is the finer of the two, such as a browser's installed web page.
    std::vector<std::string> names;
    for (const std::string& name : {hints.instanceName, hints.className}) {
        if (!name.empty() && !isInterpreter(name)) names.push_back(name);
    }
    for (const std::string& name : names) {
        if (auto entry = lookUp(byWindowClass_, lowercased(name))) return entry;
    }
    for (const std::string& name : names) {
        if (auto entry = entryWithId(name + ".desktop")) return entry;
        if (auto entry = entryWithId(lowercased(name) + ".desktop")) return entry;
    }
    for (const std::string& name : names) {
        if (auto entry = lookUp(byLastName_, lowercased(name))) return entry;
    }
    return {};
}

std::optional<MatchedEntry> DesktopEntryMatcher::findByProgram(std::int32_t pid) const {
    for (const std::string& program : programNamesOf(pid)) {
        if (auto entry = lookUp(byProgram_, program)) return entry;
    }
    return {};
}

std::optional<MatchedEntry> DesktopEntryMatcher::find(const ApplicationHints& hints) {
    installedEntriesStamp();
    if (auto entry = launchedEntry(hints.pid)) return entry;
    if (auto entry = sandboxedEntry(hints.pid)) return entry;
    if (hints.desktopFile.starts_with('/')) {
        if (auto entry = entryInFile(hints.desktopFile)) return entry;
    } else if (!hints.desktopFile.empty()) {
        if (auto entry = entryWithId(withSuffix(hints.desktopFile))) return entry;
    }
    if (!hints.gtkApplicationId.empty()) {
        if (auto entry = entryWithId(withSuffix(hints.gtkApplicationId))) return entry;
    }
    if (auto entry = findByWindow(hints)) return entry;
    return findByProgram(hints.pid);
}

}  // namespace quil::linux_platform
