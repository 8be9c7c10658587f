#import "platform/macos/macos_platform.h"

#include <unistd.h>

#include "platform/machine.h"

namespace quil {

std::unique_ptr<Platform> machinePlatform() {
    return std::make_unique<macos::MacPlatform>();
}

}  // namespace quil

namespace quil::macos {

MacPlatform::MacPlatform() : input_(STDIN_FILENO), output_(STDOUT_FILENO) {
    secureStandardStreams();
}

}  // namespace quil::macos
