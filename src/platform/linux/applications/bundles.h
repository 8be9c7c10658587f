#pragma once

#include "platform/bundles.h"

namespace quil::linux_platform {

/// The installed applications, each a desktop entry. Entries that a desktop would not show (hidden,
/// for another desktop, or without their program) are left out of the listings.
class LinuxBundles : public Bundles {
  public:
    std::vector<std::string> applicationFolders() override;
    std::string bundleSuffix() override;
    std::optional<std::vector<std::string>> contentsOfDirectory(std::string_view path) override;
    std::optional<Bundle> openBundle(std::string_view path) override;
};

}  // namespace quil::linux_platform
