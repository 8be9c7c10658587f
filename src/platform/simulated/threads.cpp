#include "platform/simulated/threads.h"

namespace quil::simulated {

ThreadRef SimulatedThreads::startThread(const std::string& name, QualityOfService qualityOfService,
                                        std::function<void()> body) {
    if (!gate_(name)) return nullptr;
    return PosixThreads::startThread(name, qualityOfService,
                                     [&taps = eventTaps_, body = std::move(body)] {
                                         body();
                                         taps.endThread();
                                     });
}

}  // namespace quil::simulated
