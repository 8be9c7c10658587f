#pragma once

#include "platform/linux/accessibility/accessibility.h"
#include "platform/linux/applications/bundles.h"
#include "platform/linux/applications/collation.h"
#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/code_signing.h"
#include "platform/linux/permissions.h"
#include "platform/linux/window_list.h"
#include "platform/linux/workspace.h"
#include "platform/linux/x11/capture/screen_capture.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/displays/displays.h"
#include "platform/linux/x11/input/event_posting.h"
#include "platform/linux/x11/input/pointer_effects.h"
#include "platform/linux/x11/pasteboard/pasteboard.h"
#include "platform/linux/x11/tap/event_taps.h"
#include "platform/platform.h"
#include "platform/posix/clock.h"
#include "platform/posix/streams.h"
#include "platform/posix/termination_watch.h"
#include "platform/posix/threads.h"

namespace quil::linux_platform {

/// A Linux desktop: X11 with the accessibility bus.
class LinuxPlatform : public Platform {
  public:
    LinuxPlatform();

    Permissions& permissions() override { return permissions_; }
    Displays& displays() override { return displays_; }
    WindowList& windowList() override { return windowList_; }
    Workspace& workspace() override { return workspace_; }
    CodeSigning& codeSigning() override { return codeSigning_; }
    Accessibility& accessibility() override { return accessibility_; }
    ScreenCapture& screenCapture() override { return screenCapture_; }
    EventPosting& eventPosting() override { return eventPosting_; }
    Pasteboard& pasteboard() override { return pasteboard_; }
    EventTaps& eventTaps() override { return eventTaps_; }
    Bundles& bundles() override { return bundles_; }
    Collation& collation() override { return collation_; }
    Clock& clock() override { return clock_; }
    Threads& threads() override { return threads_; }
    InputStream& standardInput() override { return input_; }
    OutputStream& standardOutput() override { return output_; }

  private:
    X11Display display_;
    AccessibilityBus accessibilityBus_;
    LinuxPermissions permissions_{display_, accessibilityBus_};
    X11Displays displays_{display_};
    X11Display inputDisplay_;
    PointerEffects pointerEffects_{inputDisplay_};
    LinuxWorkspace workspace_{display_, pointerEffects_};
    LinuxWindowList windowList_{display_, workspace_};
    LinuxCodeSigning codeSigning_;
    LinuxAccessibility accessibility_{accessibilityBus_, display_};
    X11ScreenCapture screenCapture_{display_};
    X11EventPosting eventPosting_{inputDisplay_, pointerEffects_};
    TerminationWatch terminationWatch_{[this] { eventPosting_.abandon(); }};
    X11Pasteboard pasteboard_;
    X11EventTaps eventTaps_;
    LinuxBundles bundles_;
    LinuxCollation collation_;
    PosixClock clock_;
    PosixInputStream input_;
    PosixOutputStream output_;
    PosixThreads threads_;  // last: its threads end before the services do
};

}  // namespace quil::linux_platform
