#include "platform/linux/platform.h"

#include <glib.h>
#include <unistd.h>

#include <clocale>

namespace quil::linux_platform {

LinuxPlatform::LinuxPlatform() : input_(STDIN_FILENO), output_(STDOUT_FILENO) {
    secureStandardStreams();
    // Application names follow the user's language. Numbers stay as programs write them.
    std::setlocale(LC_ALL, "");
    std::setlocale(LC_NUMERIC, "C");
    // The library complains about other people's files on standard error, which is our host's.
    g_log_set_default_handler([](const char*, GLogLevelFlags, const char*, gpointer) {}, nullptr);
}

}  // namespace quil::linux_platform
