#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/value.h"

namespace quil {

/// What an application bundle says of itself.
struct Bundle {
    std::optional<std::string> bundleIdentifier;
    /// May hold "CFBundleDisplayName" and "CFBundleName", the bundle's names.
    Value::Dictionary infoDictionary;
};

/// The application bundles on disk.
class Bundles {
  public:
    virtual ~Bundles() = default;

    /// The folders that hold the applications, absolute paths, in the order to look through them.
    virtual std::vector<std::string> applicationFolders() = 0;
    /// How the name of a bundle ends (".app" on a Mac).
    virtual std::string bundleSuffix() = 0;
    /// The names of a folder's entries that a desktop would show; nothing when it cannot be listed.
    virtual std::optional<std::vector<std::string>> contentsOfDirectory(std::string_view path) = 0;
    /// The bundle at that path; nothing when it cannot be opened as one.
    virtual std::optional<Bundle> openBundle(std::string_view path) = 0;
};

}  // namespace quil
