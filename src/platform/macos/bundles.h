#pragma once

#include "platform/bundles.h"

namespace quil::macos {

/// NSFileManager and NSBundle.
class MacBundles : public Bundles {
  public:
    std::vector<std::string> applicationFolders() override;
    std::string bundleSuffix() override;
    std::optional<std::vector<std::string>> contentsOfDirectory(std::string_view path) override;
    std::optional<Bundle> openBundle(std::string_view path) override;
};

}  // namespace quil::macos
