#include "platform/linux/linux_platform.h"

#include <unistd.h>

#include <clocale>

namespace quil::linux_platform {

LinuxPlatform::LinuxPlatform() : input_(STDIN_FILENO), output_(STDOUT_FILENO) {
    // Application names and their order follow the person's language.
    std::setlocale(LC_ALL, "");
    surviveClosedPipes();
}

}  // namespace quil::linux_platform
