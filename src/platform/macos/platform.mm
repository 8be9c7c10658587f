#import "platform/macos/platform.h"

#import <AppKit/AppKit.h>

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
    // The application object connects to the window server, which captures take for granted, and
    // keeps the list of screens up to date. Prohibited: no icon in the Dock, never in front.
    @autoreleasepool {
        [[NSApplication sharedApplication]
            setActivationPolicy:NSApplicationActivationPolicyProhibited];
    }
}

}  // namespace quil::macos
