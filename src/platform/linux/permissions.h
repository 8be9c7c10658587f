#pragma once

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/x11/connection.h"
#include "platform/permissions.h"

namespace quil::linux_platform {

/// A Linux desktop has no privacy permissions to grant; each stands for the service behind it being
/// there.
class LinuxPermissions : public Permissions {
  public:
    /// Both outlive this service.
    LinuxPermissions(X11Display& display, AccessibilityBus& accessibilityBus)
        : display_(display), accessibilityBus_(accessibilityBus) {}

    /// Whether the accessibility bus replies.
    bool isProcessTrusted() override { return accessibilityBus_.replies(); }
    /// Whether the display gives the pixmaps of windows (Composite).
    bool preflightScreenCaptureAccess() override;
    /// Whether the server records input (Record).
    bool preflightListenEventAccess() override;
    /// There is no such dialog; the same as the query.
    bool requestListenEventAccess() override { return preflightListenEventAccess(); }

  private:
    X11Display& display_;
    AccessibilityBus& accessibilityBus_;
};

}  // namespace quil::linux_platform
