#import "platform/macos/permissions.h"

#import <ApplicationServices/ApplicationServices.h>

namespace quil::macos {

bool MacPermissions::isProcessTrusted() {
    return AXIsProcessTrusted();
}

bool MacPermissions::preflightScreenCaptureAccess() {
    return CGPreflightScreenCaptureAccess();
}

bool MacPermissions::preflightListenEventAccess() {
    return CGPreflightListenEventAccess();
}

bool MacPermissions::requestListenEventAccess() {
    return CGRequestListenEventAccess();
}

}  // namespace quil::macos
