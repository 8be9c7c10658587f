#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quil {

/// Activation policy of an application that has windows and can be in front (NSApplication's
/// "regular" policy). Others are helpers and background programs.
inline constexpr int kActivationPolicyRegular = 0;

/// One running application, as it was when it was asked for.
struct RunningApplication {
    std::int32_t processIdentifier = 0;
    std::optional<std::string> bundleIdentifier;
    std::optional<std::string> localizedName;
    /// File system path of the executable.
    std::optional<std::string> executablePath;
    /// `kActivationPolicyRegular`, or another number.
    int activationPolicy = kActivationPolicyRegular;
};

/// The running applications, and opening installed ones.
class Workspace {
  public:
    virtual ~Workspace() = default;

    /// The application that has the user's focus; nothing when there is none.
    virtual std::optional<RunningApplication> frontmostApplication() = 0;
    /// The running application with that process id; nothing when that process is no application.
    virtual std::optional<RunningApplication> runningApplicationWithProcessIdentifier(
        std::int32_t pid) = 0;
    /// All running applications, in the platform's order; empty when they cannot be listed.
    virtual std::vector<RunningApplication> runningApplications() = 0;

    /// The path of the bundle installed under that identifier; nothing when there is none.
    virtual std::optional<std::string> urlForApplicationWithBundleIdentifier(
        std::string_view bundleIdentifier) = 0;
    /// Opens the bundle at that path, without waiting for the application. False when it cannot be
    /// opened (it does not exist, or its program does not).
    virtual bool openUrl(std::string_view path) = 0;
};

}  // namespace quil
