#include "platform/linux/desktop_entries.h"

#include <gio/gdesktopappinfo.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "text/characters.h"

namespace quil::linux_platform {
namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using AppInfoPointer = std::unique_ptr<GDesktopAppInfo, Unref>;

std::string textOrEmpty(const char* text) {
    return text ? validUtf8(text) : std::string();
}

std::string fileName(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

/// Programs that run other programs: what they run says more than they do.
bool isInterpreter(std::string_view program) {
    constexpr std::string_view kInterpreters[] = {"python", "perl", "ruby", "bash", "sh",
                                                  "dash",   "node", "gjs",  "java", "env"};
    // "python3.11" is python.
    const std::size_t end = program.find_first_of("0123456789.");
    const std::string_view base = program.substr(0, end);
    return std::find(std::begin(kInterpreters), std::end(kInterpreters), base) !=
           std::end(kInterpreters);
}

/// A file of /proc, split at its NUL bytes.
std::vector<std::string> procStrings(std::int32_t pid, const char* file) {
    std::ifstream stream("/proc/" + std::to_string(pid) + "/" + file, std::ios::binary);
    std::vector<std::string> strings;
    for (std::string entry; std::getline(stream, entry, '\0');) strings.push_back(entry);
    return strings;
}

/// The program that a process runs: the file name of its executable or, for an interpreter, of the
/// script that it was given.
std::vector<std::string> programNames(std::int32_t pid) {
    std::vector<std::string> names;
    if (const auto executable = executableOf(pid)) names.push_back(fileName(*executable));
    const auto arguments = procStrings(pid, "cmdline");
    if (!arguments.empty()) names.push_back(fileName(arguments.front()));
    const bool interpreted =
        std::any_of(names.begin(), names.end(), [](const auto& n) { return isInterpreter(n); });
    if (!interpreted) return names;
    names.clear();
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        if (arguments[i].empty() || arguments[i].front() == '-') continue;
        names.push_back(fileName(arguments[i]));
        break;
    }
    return names;
}

/// The desktop file that GIO's launcher has put into the environment of the process it started.
/// Programs that the application starts inherit it; the process id beside it tells them apart.
std::optional<std::string> launchedDesktopFile(std::int32_t pid) {
    std::string file;
    std::string forPid;
    for (const std::string& entry : procStrings(pid, "environ")) {
        constexpr std::string_view kFile = "GIO_LAUNCHED_DESKTOP_FILE=";
        constexpr std::string_view kPid = "GIO_LAUNCHED_DESKTOP_FILE_PID=";
        if (entry.starts_with(kFile)) file = entry.substr(kFile.size());
        if (entry.starts_with(kPid)) forPid = entry.substr(kPid.size());
    }
    if (file.empty() || forPid != std::to_string(pid)) return {};
    return file;
}

std::optional<DesktopEntry> entryOf(const AppInfoPointer& info) {
    if (!info) return {};
    const std::string id = textOrEmpty(g_app_info_get_id(G_APP_INFO(info.get())));
    if (id.empty()) return {};
    return DesktopEntry{id, textOrEmpty(g_app_info_get_name(G_APP_INFO(info.get())))};
}

std::optional<DesktopEntry> entryWithId(const std::string& id) {
    if (id.find('/') != std::string::npos) return {};
    return entryOf(AppInfoPointer(g_desktop_app_info_new(id.c_str())));
}

/// The id of a desktop file is its path below an applications folder with dashes for slashes; an
/// entry outside those folders has only its file name.
std::optional<DesktopEntry> entryInFile(const std::string& path) {
    const AppInfoPointer info(g_desktop_app_info_new_from_filename(path.c_str()));
    if (!info) return {};
    if (auto entry = entryOf(info)) return entry;
    if (auto entry = entryWithId(fileName(path))) return entry;
    return DesktopEntry{fileName(path), textOrEmpty(g_app_info_get_name(G_APP_INFO(info.get())))};
}

std::vector<std::string> applicationFolders() {
    std::vector<std::string> folders{std::string(g_get_user_data_dir()) + "/applications"};
    for (const char* const* folder = g_get_system_data_dirs(); *folder; ++folder) {
        folders.push_back(std::string(*folder) + "/applications");
    }
    return folders;
}

/// Changes when an entry is added to or removed from a folder.
std::string folderStamp() {
    std::string stamp;
    for (const std::string& folder : applicationFolders()) {
        struct stat status {};
        if (stat(folder.c_str(), &status) != 0) continue;
        stamp += folder + ':' + std::to_string(status.st_mtim.tv_sec) + '.' +
                 std::to_string(status.st_mtim.tv_nsec) + '\n';
    }
    return stamp;
}

template <typename Map>
std::optional<DesktopEntry> lookUp(const Map& map, const std::string& key) {
    const auto found = map.find(key);
    return found == map.end() ? std::nullopt : entryWithId(found->second);
}

}  // namespace

void DesktopEntries::refresh() {
    std::string stamp = folderStamp();
    if (stamp == stamp_) return;
    stamp_ = std::move(stamp);
    byWindowClass_.clear();
    byProgram_.clear();
    GList* all = g_app_info_get_all();
    for (GList* item = all; item; item = item->next) {
        auto* info = G_DESKTOP_APP_INFO(item->data);
        const std::string id = textOrEmpty(g_app_info_get_id(G_APP_INFO(info)));
        const std::string windowClass = textOrEmpty(g_desktop_app_info_get_startup_wm_class(info));
        if (!windowClass.empty()) byWindowClass_.emplace(lowercased(windowClass), id);
        const std::string program =
            fileName(textOrEmpty(g_app_info_get_executable(G_APP_INFO(info))));
        // An interpreter's name says nothing of the application, and an entry that is shown to the
        // person is a better guess than a hidden one.
        if (program.empty() || isInterpreter(program)) continue;
        if (g_app_info_should_show(G_APP_INFO(info))) {
            byProgram_.insert_or_assign(program, id);
        } else {
            byProgram_.emplace(program, id);
        }
    }
    g_list_free_full(all, g_object_unref);
}

std::optional<DesktopEntry> DesktopEntries::find(const ApplicationHints& hints) {
    if (const auto file = launchedDesktopFile(hints.pid)) {
        if (auto entry = entryInFile(*file)) return entry;
    }
    if (!hints.gtkApplicationId.empty()) {
        if (auto entry = entryWithId(hints.gtkApplicationId + ".desktop")) return entry;
    }
    refresh();
    for (const std::string& name : {hints.className, hints.instanceName}) {
        if (name.empty() || isInterpreter(lowercased(name))) continue;
        if (auto entry = lookUp(byWindowClass_, lowercased(name))) return entry;
        if (auto entry = entryWithId(name + ".desktop")) return entry;
        if (auto entry = entryWithId(lowercased(name) + ".desktop")) return entry;
    }
    for (const std::string& program : programNames(hints.pid)) {
        if (auto entry = lookUp(byProgram_, program)) return entry;
    }
    return {};
}

std::optional<std::string> desktopFileOf(const std::string& id) {
    if (id.find('/') != std::string::npos) return {};
    const AppInfoPointer info(g_desktop_app_info_new(id.c_str()));
    if (!info) return {};
    const char* file = g_desktop_app_info_get_filename(info.get());
    return file ? std::optional(validUtf8(file)) : std::nullopt;
}

std::optional<std::string> executableOf(std::int32_t pid) {
    std::error_code error;
    const auto path = std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/exe", error);
    if (error) return {};
    // The kernel marks the executable of a program that has been replaced since it started.
    std::string text = path.string();
    constexpr std::string_view kDeleted = " (deleted)";
    if (text.ends_with(kDeleted)) text.resize(text.size() - kDeleted.size());
    return validUtf8(text);
}

std::string processName(std::int32_t pid) {
    std::ifstream stream("/proc/" + std::to_string(pid) + "/comm");
    std::string name;
    std::getline(stream, name);
    return validUtf8(name);
}

}  // namespace quil::linux_platform
