#pragma once

namespace quil {

/// The privacy permissions of this process. The queries never ask the user and are evaluated each
/// time.
class Permissions {
  public:
    virtual ~Permissions() = default;

    /// Accessibility: may this process observe and act on other applications' elements?
    virtual bool isProcessTrusted() = 0;
    /// Screen Recording: may this process read other applications' windows?
    virtual bool preflightScreenCaptureAccess() = 0;
    /// Input Monitoring: may this process listen to the user's input?
    virtual bool preflightListenEventAccess() = 0;
    /// Asks the user for Input Monitoring where the platform has such a question. Returns whether
    /// the permission is granted now.
    virtual bool requestListenEventAccess() = 0;
};

}  // namespace quil
