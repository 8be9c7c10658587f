#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "json/json.h"
#include "platform/platform.h"

namespace quil {

/// The application and window that a host looks at or acts on. What cannot be found is absent.
struct CaptureTarget {
    std::optional<std::string> bundleIdentifier;
    /// The application's localized display name.
    std::optional<std::string> name;
    /// Title of the application's focused window; may be empty.
    std::optional<std::string> windowTitle;
    std::optional<std::int64_t> pid;
    /// File system path of the application's executable.
    std::optional<std::string> executablePath;
    /// Team identifier of the running process's code signature, or else its signing identifier.
    std::optional<std::string> signingIdentity;

    bool operator==(const CaptureTarget&) const = default;
};

/// The frontmost application and its focused window, as they are now; all absent when no
/// application is frontmost. Needs no permission, but the title is absent without Accessibility.
CaptureTarget frontmostTarget(Platform& platform);

/// The target as the protocol writes it; absent fields are left out.
Json targetDictionary(const CaptureTarget& target);

/// File system path of the application's executable; absent when it is not known.
std::optional<std::string> executablePath(const RunningApplication& application);

/// Team identifier, or else signing identifier, of a running process; absent when it has no
/// signature or the platform has no code signing.
std::optional<std::string> signingIdentity(CodeSigning& codeSigning, std::int32_t pid);

}  // namespace quil
