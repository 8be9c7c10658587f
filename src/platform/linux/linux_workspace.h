#pragma once

#include "platform/linux/desktop_entries.h"
#include "platform/linux/x11/windows.h"
#include "platform/window_list.h"
#include "platform/workspace.h"

namespace quil::linux_platform {

/// The applications: every process that has a top-level window is a running one, and the desktop
/// entry that it was started from names it. A desktop file id is the bundle identifier.
class LinuxWorkspace : public Workspace {
  public:
    /// `display` outlives this service.
    explicit LinuxWorkspace(X11Display& display) : display_(display) {}

    std::optional<RunningApplication> frontmostApplication() override;
    std::optional<RunningApplication> runningApplicationWithProcessIdentifier(
        std::int32_t pid) override;
    std::vector<RunningApplication> runningApplications() override;
    std::optional<std::string> urlForApplicationWithBundleIdentifier(
        std::string_view bundleIdentifier) override;
    bool openUrl(std::string_view path) override;

    /// The application that owns the window; nothing when its process is not known.
    std::optional<RunningApplication> applicationOf(const X11Window& window);

  private:
    X11Display& display_;
    DesktopEntries entries_;
};

/// The top-level windows as information dictionaries.
class LinuxWindowList : public WindowList {
  public:
    /// Both outlive this service.
    LinuxWindowList(X11Display& display, LinuxWorkspace& workspace)
        : display_(display), workspace_(workspace) {}

    std::optional<Value> copyWindowInfo(std::uint32_t options,
                                        std::uint32_t relativeToWindow) override;

  private:
    X11Display& display_;
    LinuxWorkspace& workspace_;
};

}  // namespace quil::linux_platform
