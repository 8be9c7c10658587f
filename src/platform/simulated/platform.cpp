#include "platform/simulated/platform.h"

namespace quil {

SimulatedPlatform::SimulatedPlatform(SimulatedDesktop& desktop)
    : SimulatedPlatform(desktop, input, output) {}

SimulatedPlatform::SimulatedPlatform(SimulatedDesktop& desktop, InputStream& standardInput,
                                     OutputStream& standardOutput)
    : permissions_(desktop),
      displays_(desktop),
      windowList_(desktop),
      workspace_(desktop),
      codeSigning_(desktop),
      accessibility_(desktop),
      screenCapture_(desktop),
      eventPosting_(desktop),
      pasteboard_(desktop),
      eventTaps_(desktop.eventTaps()),
      bundles_(desktop),
      clock_(desktop),
      requests_(standardInput, [&desktop] { desktop.requestArrives(); }),
      standardOutput_(standardOutput),
      threads_(desktop.eventTaps(), [&desktop](std::string_view name) {
          return !desktop.enter("startThread", {name});
      }) {}

}  // namespace quil
