#include "platform/linux/applications/bundles.h"

#include <algorithm>
#include <utility>

#include "platform/linux/applications/desktop_entries.h"

namespace quil::linux_platform {
namespace {

bool isReplacedByEarlierFolder(std::string_view folder, const std::string& name) {
    for (const std::string& earlier : desktopEntryFolders()) {
        if (earlier == folder) return false;
        std::string path = earlier;
        path.append("/").append(name);
        if (g_file_test(path.c_str(), G_FILE_TEST_EXISTS)) return true;
    }
    return false;
}

bool isShown(const DesktopEntry& entry) {
    return entry && !g_desktop_app_info_get_is_hidden(entry.get()) &&
           g_app_info_should_show(G_APP_INFO(entry.get()));
}

}  // namespace

std::vector<std::string> LinuxBundles::applicationFolders() {
    return desktopEntryFolders();
}

std::string LinuxBundles::bundleSuffix() {
    return std::string(kDesktopEntrySuffix);
}

std::optional<std::vector<std::string>> LinuxBundles::contentsOfDirectory(std::string_view path) {
    const std::string folder(path);
    const GlibDirectory directory(g_dir_open(folder.c_str(), 0, nullptr));
    if (!directory) return {};
    std::vector<std::string> names;
    while (const char* name = g_dir_read_name(directory.get())) {
        if (!isDesktopEntryName(name) || isReplacedByEarlierFolder(folder, name)) continue;
        if (isShown(readDesktopEntry(folder + '/' + name))) names.emplace_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<Bundle> LinuxBundles::openBundle(std::string_view path) {
    const DesktopEntry entry = readDesktopEntry(std::string(path));
    if (!entry) return {};
    Bundle bundle;
    bundle.bundleIdentifier = std::string(path.substr(path.rfind('/') + 1));
    if (auto name = localizedNameOf(entry)) {
        bundle.infoDictionary.emplace("CFBundleDisplayName", std::move(*name));
    }
    return bundle;
}

}  // namespace quil::linux_platform
