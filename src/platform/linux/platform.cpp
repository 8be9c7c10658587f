#include "platform/linux/platform.h"

#include <gio/gio.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <optional>
#include <string>

namespace quil::linux_platform {
namespace {

/// GIO chooses once how it reads files, by this variable. Where GVfs is installed it would go by
/// the session bus for that, and wait for one that does not reply. Programs that are launched find
/// the variable as it was.
void readFilesWithoutSessionBus() {
    constexpr const char* kVariable = "GIO_USE_VFS";
    const char* value = std::getenv(kVariable);
    const auto before = value ? std::optional<std::string>(value) : std::nullopt;
    setenv(kVariable, "local", 1);
    g_vfs_get_default();
    if (before) {
        setenv(kVariable, before->c_str(), 1);
    } else {
        unsetenv(kVariable);
    }
}

}  // namespace

LinuxPlatform::LinuxPlatform() : input_(STDIN_FILENO), output_(STDOUT_FILENO) {
    secureStandardStreams();
    // Application names follow the user's language. Numbers stay as programs write them.
    std::setlocale(LC_ALL, "");
    std::setlocale(LC_NUMERIC, "C");
    // The library complains about other people's files on standard error, which is our host's.
    g_log_set_default_handler([](const char*, GLogLevelFlags, const char*, gpointer) {}, nullptr);
    readFilesWithoutSessionBus();
}

}  // namespace quil::linux_platform
