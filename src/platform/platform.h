#pragma once

#include "platform/accessibility.h"
#include "platform/bundles.h"
#include "platform/clock.h"
#include "platform/code_signing.h"
#include "platform/collation.h"
#include "platform/displays.h"
#include "platform/event_posting.h"
#include "platform/event_taps.h"
#include "platform/pasteboard.h"
#include "platform/permissions.h"
#include "platform/screen_capture.h"
#include "platform/streams.h"
#include "platform/threads.h"
#include "platform/window_list.h"
#include "platform/workspace.h"

namespace quil {

/// Everything that the runtime asks of the system it runs on. The services belong to the platform
/// and live as long as it does. Apart from `eventTaps`, `threads` and `clock`, a service is called
/// from one thread at a time.
class Platform {
  public:
    virtual ~Platform() = default;

    virtual Permissions& permissions() = 0;
    virtual Displays& displays() = 0;
    virtual WindowList& windowList() = 0;
    virtual Workspace& workspace() = 0;
    virtual CodeSigning& codeSigning() = 0;
    virtual Accessibility& accessibility() = 0;
    virtual ScreenCapture& screenCapture() = 0;
    virtual EventPosting& eventPosting() = 0;
    virtual Pasteboard& pasteboard() = 0;
    virtual EventTaps& eventTaps() = 0;
    virtual Bundles& bundles() = 0;
    virtual Collation& collation() = 0;
    virtual Clock& clock() = 0;
    virtual Threads& threads() = 0;
    virtual InputStream& standardInput() = 0;
    virtual OutputStream& standardOutput() = 0;
};

}  // namespace quil
