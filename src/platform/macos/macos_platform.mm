#import "platform/macos/macos_platform.h"

#import <ApplicationServices/ApplicationServices.h>

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
    // Connects to the window server. A program without an application object has to have done so
    // before it captures a window: the capture services take it for granted.
    CGMainDisplayID();
}

}  // namespace quil::macos
