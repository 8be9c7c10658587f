#pragma once

#include "platform/simulated/desktop.h"
#include "platform/simulated/services.h"
#include "platform/simulated/streams.h"
#include "platform/simulated/threads.h"

namespace quil {

/// A simulated desktop as a platform. The desktop outlives it, and is not destroyed while a runtime
/// uses the platform.
///
///     SimulatedPlatform platform(desktop);
///     platform.input.line(R"({"id": 1, "method": "ping"})");
///     runProcess(platform);
///     platform.output.lines();
class SimulatedPlatform : public Platform {
  public:
    /// Standard input and output are `input` and `output`.
    explicit SimulatedPlatform(SimulatedDesktop& desktop);
    /// Standard input and output are those, which outlive the platform.
    SimulatedPlatform(SimulatedDesktop& desktop, InputStream& standardInput,
                      OutputStream& standardOutput);

    simulated::MemoryInput input;
    simulated::MemoryOutput output;

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
    InputStream& standardInput() override { return requests_; }
    OutputStream& standardOutput() override { return standardOutput_; }

  private:
    simulated::SimulatedPermissions permissions_;
    simulated::SimulatedDisplays displays_;
    simulated::SimulatedWindowList windowList_;
    simulated::SimulatedWorkspace workspace_;
    simulated::SimulatedCodeSigning codeSigning_;
    simulated::SimulatedAccessibility accessibility_;
    simulated::SimulatedScreenCapture screenCapture_;
    simulated::SimulatedEventPosting eventPosting_;
    simulated::SimulatedPasteboard pasteboard_;
    simulated::SimulatedEventTaps& eventTaps_;
    simulated::SimulatedBundles bundles_;
    simulated::SimulatedCollation collation_;
    simulated::SimulatedClock clock_;
    simulated::RequestInput requests_;
    OutputStream& standardOutput_;
    // Last, so that the threads have ended before anything that they use.
    simulated::SimulatedThreads threads_;
};

}  // namespace quil
