#include "platform/simulated/threads.h"

namespace quil::simulated {

SimulatedThreads::~SimulatedThreads() {
    for (std::thread& thread : threads_) thread.join();
}

ThreadRef SimulatedThreads::startThread(const std::string&, QualityOfService,
                                        std::function<void()> body) {
    const std::lock_guard lock(mutex_);
    threads_.emplace_back([this, body = std::move(body)] {
        body();
        eventTaps_.endThread();
    });
    return std::make_shared<ThreadHandle>();
}

void SimulatedThreads::runMainRunLoop() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return mainStopped_; });
}

void SimulatedThreads::stopMainRunLoop() {
    const std::lock_guard lock(mutex_);
    mainStopped_ = true;
    changed_.notify_all();
}

}  // namespace quil::simulated
