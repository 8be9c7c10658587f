#pragma once

#include "platform/macos/call_thread.h"
#include "platform/workspace.h"

namespace quil::macos {

/// NSWorkspace and NSRunningApplication. They are kept up to date by the main thread's run loop.
class MacWorkspace : public Workspace {
  public:
    std::optional<RunningApplication> frontmostApplication() override;
    std::optional<RunningApplication> runningApplicationWithProcessIdentifier(
        std::int32_t pid) override;
    std::vector<RunningApplication> runningApplications() override;
    std::optional<std::string> urlForApplicationWithBundleIdentifier(
        std::string_view bundleIdentifier) override;
    bool openUrl(std::string_view path) override;

  private:
    CallThread opening_{"quil.open-url"};
};

}  // namespace quil::macos
