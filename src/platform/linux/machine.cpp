#include "platform/machine.h"

#include "platform/linux/platform.h"

namespace quil {

std::unique_ptr<Platform> machinePlatform() {
    return std::make_unique<linux_platform::LinuxPlatform>();
}

}  // namespace quil
