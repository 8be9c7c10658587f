#include "platform/linux/linux_platform.h"
#include "runtime/process.h"

int main() {
    quil::linux_platform::LinuxPlatform platform;
    return quil::runProcess(platform);
}
