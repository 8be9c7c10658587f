#include "platform/linux/applications/application_launch.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <system_error>
#include <thread>

#include "platform/linux/applications/desktop_entries.h"
#include "platform/linux/applications/program_files.h"
#include "platform/linux/applications/program_name.h"

namespace quil::linux_platform {
namespace {

using LaunchContext = GObjectHandle<GAppLaunchContext>;

using BusConnection = GObjectHandle<GDBusConnection>;

/// Starting a program takes milliseconds; longer only when the session bus does not reply.
constexpr std::chrono::seconds kLaunchTimeout{5};
constexpr int kServiceTimeoutMs = 4000;

/// A launch that is under way in a thread of its own.
struct Attempt {
    std::string path;
    std::string startupId;
    std::promise<bool> outcome;
    /// Set by the first of two: the thread that is about to start the application, or the request
    /// that has waited for it for too long.
    std::atomic_flag isDecided;
};

/// The entry, to be started as a program of its own wherever it names one. Asked through the
/// session bus instead, an application would come up on the display of the process that started the
/// bus.
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
/// host's entry. Only one that takes the startup id out again is given one; others would hand it on
/// to what they start much later.
LaunchContext launchContext(const std::string& path, const DesktopEntry& entry,
                            const std::string& startupId) {
    LaunchContext context(g_app_launch_context_new());
    g_app_launch_context_unsetenv(context.get(), "DESKTOP_STARTUP_ID");
    g_app_launch_context_unsetenv(context.get(), "XDG_ACTIVATION_TOKEN");
    if (!startupId.empty() &&
        g_desktop_app_info_get_boolean(entry.get(), G_KEY_FILE_DESKTOP_KEY_STARTUP_NOTIFY)) {
        g_app_launch_context_setenv(context.get(), "DESKTOP_STARTUP_ID", startupId.c_str());
    }
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

/// Whether the entry's command can be started. The library only looks for its first word, and does
/// not notice that the program that it has found does not run.
bool canBeStarted(const DesktopEntry& entry) {
    const char* line = g_app_info_get_commandline(G_APP_INFO(entry.get()));
    int count = 0;
    char** parsed = nullptr;
    if (!line || !g_shell_parse_argv(line, &count, &parsed, nullptr)) return false;
    const std::vector<std::string> words(parsed, parsed + count);
    g_strfreev(parsed);
    const GlibText folder(g_desktop_app_info_get_string(entry.get(), G_KEY_FILE_DESKTOP_KEY_PATH));
    return canBeRun(words, folder && *folder.get() ? folder.get() : "/");
}

/// Starts the service of an application that has no command (freedesktop.org, desktop files, "D-Bus
/// Activation"): it is called as its desktop file, and has an object of that path.
bool startService(const BusConnection& bus, const Attempt& attempt) {
    std::string name(fileName(attempt.path));
    name.resize(name.size() - kDesktopEntrySuffix.size());
    if (!bus || !g_dbus_is_name(name.c_str()) || g_dbus_is_unique_name(name.c_str())) return false;
    GError* error = nullptr;
    GVariant* const reply = g_dbus_connection_call_sync(
        bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "StartServiceByName", g_variant_new("(su)", name.c_str(), 0U), nullptr,
        G_DBUS_CALL_FLAGS_NONE, kServiceTimeoutMs, nullptr, &error);
    if (reply) g_variant_unref(reply);
    // The bus has been asked, and a slow service still comes.
    const bool isSlow = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != 0;
    g_clear_error(&error);
    if (!reply && !isSlow) return false;

    std::string object = '/' + name;
    std::ranges::replace(object, '.', '/');
    std::ranges::replace(object, '-', '_');
    GVariantBuilder platform;
    g_variant_builder_init(&platform, G_VARIANT_TYPE_VARDICT);
    if (!attempt.startupId.empty()) {
        g_variant_builder_add(&platform, "{sv}", "desktop-startup-id",
                              g_variant_new_string(attempt.startupId.c_str()));
    }
    g_dbus_connection_call(bus.get(), name.c_str(), object.c_str(), "org.freedesktop.Application",
                           "Activate", g_variant_new("(a{sv})", &platform), nullptr,
                           G_DBUS_CALL_FLAGS_NONE, kServiceTimeoutMs, nullptr, nullptr, nullptr);
    return g_dbus_connection_flush_sync(bus.get(), nullptr, nullptr) != 0;
}

bool startProgram(const DesktopEntry& entry, const Attempt& attempt) {
    if (!canBeStarted(entry)) return false;
    // Where the entry itself says where to start, the library has gone there already.
    const GlibText ownFolder(
        g_desktop_app_info_get_string(entry.get(), G_KEY_FILE_DESKTOP_KEY_PATH));
    std::string home = g_get_home_dir();
    const auto context = launchContext(attempt.path, entry, attempt.startupId);
    // The library starts programs as its grandchildren, with standard input from the null device
    // and all descriptors above standard error closed.
    const auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                                G_SPAWN_STDERR_TO_DEV_NULL);
    return g_desktop_app_info_launch_uris_as_manager(entry.get(), nullptr, context.get(), flags,
                                                     leaveHost, ownFolder ? nullptr : home.data(),
                                                     nullptr, nullptr, nullptr) != 0;
}

bool launch(Attempt& attempt) {
    const DesktopEntry entry = readForLaunch(attempt.path);
    if (!entry) return false;
    // The library reports on the bus what it starts, and waits without a limit until it is
    // connected, which it stays as long as we hold on to the connection.
    const BusConnection bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    if (bus) g_dbus_connection_set_exit_on_close(bus.get(), 0);
    if (attempt.isDecided.test_and_set()) return false;
    return g_app_info_get_commandline(G_APP_INFO(entry.get())) ? startProgram(entry, attempt)
                                                               : startService(bus, attempt);
}

}  // namespace

bool openDesktopEntry(std::string_view path, const std::string& startupId) {
    if (!path.ends_with(kDesktopEntrySuffix) || path.find('\0') != std::string_view::npos) {
        return false;
    }
    const auto attempt = std::make_shared<Attempt>();
    attempt->path = path;
    attempt->startupId = startupId;
    std::future<bool> outcome = attempt->outcome.get_future();
    // A thread that the bus keeps is left behind.
    try {
        std::thread([attempt] { attempt->outcome.set_value(launch(*attempt)); }).detach();
    } catch (const std::system_error&) {
        return false;
    }
    if (outcome.wait_for(kLaunchTimeout) != std::future_status::ready &&
        !attempt->isDecided.test_and_set()) {
        return false;
    }
    // What is being started is there at once; a service has its own limit.
    return outcome.wait_for(kLaunchTimeout) != std::future_status::ready || outcome.get();
}

}  // namespace quil::linux_platform
