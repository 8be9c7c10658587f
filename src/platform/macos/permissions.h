#pragma once

#include "platform/permissions.h"

namespace quil::macos {

/// What the user has granted in the privacy settings to this process, or rather to the program
/// that the system holds responsible for it: the host that started it.
class MacPermissions : public Permissions {
  public:
    bool isProcessTrusted() override;
    bool preflightScreenCaptureAccess() override;
    bool preflightListenEventAccess() override;
    bool requestListenEventAccess() override;
};

}  // namespace quil::macos
