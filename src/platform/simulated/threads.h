#pragma once

#include <functional>
#include <string_view>

#include "platform/posix/threads.h"
#include "platform/simulated/event_taps.h"

namespace quil::simulated {

/// The machine's threads, with the run loops of `SimulatedEventTaps`, which outlives them.
class SimulatedThreads : public PosixThreads {
  public:
    /// Asked before a thread is started, with its name; false makes it fail.
    using Gate = std::function<bool(std::string_view name)>;

    SimulatedThreads(SimulatedEventTaps& eventTaps, Gate gate)
        : eventTaps_(eventTaps), gate_(std::move(gate)) {}

    ThreadRef startThread(const std::string& name, QualityOfService qualityOfService,
                          std::function<void()> body) override;

  private:
    SimulatedEventTaps& eventTaps_;
    const Gate gate_;
};

}  // namespace quil::simulated
