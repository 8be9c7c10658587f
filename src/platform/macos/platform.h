#pragma once

#include "platform/macos/accessibility.h"
#include "platform/macos/bundles.h"
#include "platform/macos/clock.h"
#include "platform/macos/code_signing.h"
#include "platform/macos/collation.h"
#include "platform/macos/displays.h"
#include "platform/macos/event_posting.h"
#include "platform/macos/event_taps.h"
#include "platform/macos/pasteboard.h"
#include "platform/macos/permissions.h"
#include "platform/macos/screen_capture.h"
#include "platform/macos/threads.h"
#include "platform/macos/window_list.h"
#include "platform/macos/workspace.h"
#include "platform/platform.h"
#include "platform/posix/streams.h"

namespace quil::macos {

/// The Mac that this process runs on. To be made on the main thread.
class MacPlatform : public Platform {
  public:
    MacPlatform();

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
    MacPermissions permissions_;
    MacDisplays displays_;
    MacWindowList windowList_;
    MacWorkspace workspace_;
    MacCodeSigning codeSigning_;
    MacAccessibility accessibility_;
    MacScreenCapture screenCapture_;
    MacEventPosting eventPosting_;
    MacPasteboard pasteboard_;
    MacEventTaps eventTaps_;
    MacBundles bundles_;
    MacCollation collation_;
    MacClock clock_;
    PosixInputStream input_;
    PosixOutputStream output_;
    MacThreads threads_;  // last: its threads end before the services do
};

}  // namespace quil::macos
