#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/simulated/event_taps.h"
#include "platform/threads.h"

namespace quil::simulated {

/// Real threads whose run loops are those of `SimulatedEventTaps`, which outlives them.
class SimulatedThreads : public Threads {
  public:
    explicit SimulatedThreads(SimulatedEventTaps& eventTaps) : eventTaps_(eventTaps) {}
    ~SimulatedThreads() override;

    ThreadRef startThread(const std::string& name, QualityOfService qualityOfService,
                          std::function<void()> body) override;
    void runMainRunLoop() override;
    void stopMainRunLoop() override;

  private:
    SimulatedEventTaps& eventTaps_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::thread> threads_;
    bool mainStopped_ = false;
};

}  // namespace quil::simulated
