#include "platform/linux/applications/desktop_entries.h"

#include <algorithm>
#include <utility>

#include "text/characters.h"

namespace quil::linux_platform {
namespace {

bool isFile(const std::string& path) {
    return g_file_test(path.c_str(), G_FILE_TEST_IS_REGULAR) != 0;
}

/// In an id, a dash may stand for the slash of a sub-folder: "kde/ark.desktop" is
/// "kde-ark.desktop". The file name as it is goes first. What is looked at are the folders that
/// exist, since an id can have any number of dashes.
std::optional<std::string> findBelow(const std::string& folder, std::string_view id, int depth) {
    std::string path = folder + '/' + std::string(id);
    if (isFile(path)) return path;
    if (depth == kDeepestEntryFolder || id.find('-') == std::string_view::npos) return {};
    const GlibDirectory directory(g_dir_open(folder.c_str(), 0, nullptr));
    while (const char* name = directory ? g_dir_read_name(directory.get()) : nullptr) {
        const std::string_view subFolder(name);
        if (!id.starts_with(subFolder) || !id.substr(subFolder.size()).starts_with('-')) continue;
        const auto rest = id.substr(subFolder.size() + 1);
        if (auto found = findBelow(folder + '/' + name, rest, depth + 1)) return found;
    }
    return {};
}

}  // namespace

std::vector<std::string> desktopEntryFolders() {
    std::vector<std::string> folders;
    const auto add = [&](const char* dataDirectory) {
        GlibText folder(g_build_filename(dataDirectory, "applications", nullptr));
        if (!g_utf8_validate(folder.get(), -1, nullptr)) return;
        if (std::find(folders.begin(), folders.end(), folder.get()) == folders.end()) {
            folders.emplace_back(folder.get());
        }
    };
    add(g_get_user_data_dir());
    for (const char* const* directory = g_get_system_data_dirs(); *directory; ++directory) {
        add(*directory);
    }
    return folders;
}

bool isDesktopEntryName(const std::string& fileName) {
    return fileName.ends_with(kDesktopEntrySuffix) &&
           g_utf8_validate(fileName.c_str(), -1, nullptr);
}

std::optional<std::string> findDesktopEntry(std::string_view id) {
    if (!id.ends_with(kDesktopEntrySuffix) || id.find('/') != std::string_view::npos ||
        id.find('\0') != std::string_view::npos) {
        return {};
    }
    for (const std::string& folder : desktopEntryFolders()) {
        const auto path = findBelow(folder, id, 0);
        if (!path) continue;
        const GlibKeyFile keys = readKeysOfDesktopEntry(*path);
        const bool removed = keys && g_key_file_get_boolean(keys.get(), G_KEY_FILE_DESKTOP_GROUP,
                                                            G_KEY_FILE_DESKTOP_KEY_HIDDEN, nullptr);
        return removed ? std::nullopt : path;
    }
    return {};
}

DesktopEntry readDesktopEntry(const std::string& path) {
    // To open a pipe could take for ever.
    return DesktopEntry(isFile(path) ? g_desktop_app_info_new_from_filename(path.c_str())
                                     : nullptr);
}

GlibKeyFile readKeysOfDesktopEntry(const std::string& path) {
    GlibKeyFile keys(g_key_file_new());
    const bool isRead = isFile(path) && g_key_file_load_from_file(keys.get(), path.c_str(),
                                                                  G_KEY_FILE_NONE, nullptr);
    return isRead ? std::move(keys) : nullptr;
}

std::optional<std::string> localizedNameOf(const DesktopEntry& entry) {
    // GIO has a name for everything: "Unnamed" for what has none.
    const GlibText name(
        g_desktop_app_info_get_locale_string(entry.get(), G_KEY_FILE_DESKTOP_KEY_NAME));
    return name ? std::optional<std::string>(name.get()) : std::nullopt;
}

std::string commandLineOf(const DesktopEntry& entry) {
    const char* line = entry ? g_app_info_get_commandline(G_APP_INFO(entry.get())) : nullptr;
    return line ? line : "";
}

std::vector<std::string> commandOf(const DesktopEntry& entry) {
    int count = 0;
    char** parsed = nullptr;
    if (!g_shell_parse_argv(commandLineOf(entry).c_str(), &count, &parsed, nullptr)) return {};
    std::vector<std::string> words;
    for (int i = 0; i < count; ++i) words.push_back(validUtf8(parsed[i]));
    g_strfreev(parsed);
    std::erase_if(words, [](const std::string& w) { return w.size() == 2 && w.front() == '%'; });
    return words;
}

std::string windowClassOf(const DesktopEntry& entry) {
    const char* name = g_desktop_app_info_get_startup_wm_class(entry.get());
    return name ? validUtf8(name) : std::string();
}

}  // namespace quil::linux_platform
