#pragma once

#include <map>

#include "platform/linux/applications/application_identities.h"
#include "platform/linux/launch_in_progress.h"
#include "platform/linux/x11/input/pointer_effects.h"
#include "platform/linux/x11/windows/windows.h"
#include "platform/workspace.h"

namespace quil::linux_platform {

/// The applications: every process that has a top-level window is a running one, and the desktop
/// entry that it comes from names it. The bundle identifier is the desktop file id, ending
/// included ("org.gnome.Calculator.desktop"), the bundle the entry's file.
class LinuxWorkspace : public Workspace {
  public:
    /// Both outlive this service.
    LinuxWorkspace(X11Display& display, PointerEffects& effects)
        : display_(display), effects_(effects) {}

    /// The application that owns the active window, once posted pointer events have had their
    /// effect; nothing when its process is not known. What has been launched and does not come to
    /// the front by itself is brought there, so that the next request finds it.
    std::optional<RunningApplication> frontmostApplication() override;
    /// Also finds an application that still runs but has closed its last window since it was
    /// looked at.
    std::optional<RunningApplication> runningApplicationWithProcessIdentifier(
        std::int32_t pid) override;
    /// Those with ordinary windows, wherever these are, front to back. An application that shows
    /// windows of several desktop entries is known by the active one of them, else the topmost
    /// ordinary one.
    std::vector<RunningApplication> runningApplications() override;
    std::optional<std::string> urlForApplicationWithBundleIdentifier(
        std::string_view bundleIdentifier) override;
    bool openUrl(std::string_view path) override;

    /// The applications that own these windows, given front to back, by process.
    std::map<std::int32_t, RunningApplication> ownersOf(const std::vector<X11Window>& windows);

  private:
    using Windows = std::vector<X11Window>;

    /// The application that owns the window; nothing when its process is not known. A window that
    /// leads to no entry itself is taken to be of the entry of the window that it belongs to, else
    /// of another window of its process. `all` are the windows to look through, if they are at
    /// hand.
    std::optional<RunningApplication> applicationOf(X11Connection& connection,
                                                    const X11Window& window, const Windows* all);
    std::optional<MatchedEntry> entryOf(X11Connection& connection, const X11Window& window);
    /// The entry of the nearest owner that has one, upward.
    std::optional<MatchedEntry> entryOfOwner(X11Connection& connection, const X11Window& window);
    /// The topmost entry that a window of the same process leads to itself.
    std::optional<MatchedEntry> entryOfOthers(X11Connection& connection, const X11Window& window,
                                              const Windows& all);

    /// Brings what was launched last to the front, if it should be there.
    void followLaunch(X11Connection& connection);

    X11Display& display_;
    PointerEffects& effects_;
    ApplicationIdentities identities_;
    unsigned launches_ = 0;
    std::optional<LaunchInProgress> launch_;
};

}  // namespace quil::linux_platform
