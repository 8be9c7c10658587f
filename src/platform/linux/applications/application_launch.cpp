#include "platform/linux/applications/application_launch.h"

#include <unistd.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "platform/linux/applications/desktop_entries.h"

namespace quil::linux_platform {
namespace {

using LaunchContext = GObjectHandle<GAppLaunchContext>;

/// Starting a program takes milliseconds; longer only when the session bus does not reply.
constexpr std::chrono::seconds kLaunchTimeout{5};

/// The entry, to be started as a program of its own wherever it names one. Asked through the
/// session bus instead, an application would come up on the display of whoever started the bus.
DesktopEntry readForLaunch(const std::string& path) {
    const GlibKeyFile keyFile = readKeysOfDesktopEntry(path);
    if (!keyFile) return nullptr;
    const auto isSet = [&](const char* key) {
        return g_key_file_get_boolean(keyFile.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr) != 0;
    };
    if (isSet(G_KEY_FILE_DESKTOP_KEY_HIDDEN)) return nullptr;
    if (!isSet(G_KEY_FILE_DESKTOP_KEY_DBUS_ACTIVATABLE) ||
        !g_key_file_has_key(keyFile.get(), G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_EXEC,
                            nullptr)) {
        return readDesktopEntry(path);
    }
    g_key_file_remove_key(keyFile.get(), G_KEY_FILE_DESKTOP_GROUP,
                          G_KEY_FILE_DESKTOP_KEY_DBUS_ACTIVATABLE, nullptr);
    return DesktopEntry(g_desktop_app_info_new_from_keyfile(keyFile.get()));
}

/// The new program's environment is ours, without what says how the host was launched: an
/// application would take itself for that launch, come up behind other windows, and be known by the
/// host's entry.
LaunchContext launchContext(const std::string& path) {
    LaunchContext context(g_app_launch_context_new());
    g_app_launch_context_unsetenv(context.get(), "DESKTOP_STARTUP_ID");
    g_app_launch_context_unsetenv(context.get(), "XDG_ACTIVATION_TOKEN");
    // The library notes it only if it has read the file itself.
    g_app_launch_context_setenv(context.get(), "GIO_LAUNCHED_DESKTOP_FILE", path.c_str());
    return context;
}

/// Runs in the new process: whatever ends our session or its terminal leaves the application alone,
/// and it does not keep the host's folder in use. `folder` is where to go; null to stay.
void leaveHost(gpointer folder) {
    setsid();
    // A home that cannot be entered is no reason not to start.
    [[maybe_unused]] const bool isThere = folder && chdir(static_cast<const char*>(folder)) == 0;
}

bool launch(const std::string& path) {
    const DesktopEntry entry = readForLaunch(path);
    if (!entry) return false;
    // Where the entry itself says where to start, the library has gone there already.
    const GlibText ownFolder(
        g_desktop_app_info_get_string(entry.get(), G_KEY_FILE_DESKTOP_KEY_PATH));
    std::string home = g_get_home_dir();
    // The library starts programs as its grandchildren, with standard input from the null device
    // and all descriptors above standard error closed.
    const auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                                G_SPAWN_STDERR_TO_DEV_NULL);
    return g_desktop_app_info_launch_uris_as_manager(
               entry.get(), nullptr, launchContext(path).get(), flags, leaveHost,
               ownFolder ? nullptr : home.data(), nullptr, nullptr, nullptr) != 0;
}

}  // namespace

bool openDesktopEntry(std::string_view path) {
    if (!path.ends_with(kDesktopEntrySuffix) || path.find('\0') != std::string_view::npos) {
        return false;
    }
    // The library waits for the session bus without a limit; a thread that it keeps is left behind.
    const auto started = std::make_shared<std::promise<bool>>();
    std::future<bool> outcome = started->get_future();
    std::thread([started, file = std::string(path)] { started->set_value(launch(file)); }).detach();
    return outcome.wait_for(kLaunchTimeout) == std::future_status::ready && outcome.get();
}

}  // namespace quil::linux_platform
