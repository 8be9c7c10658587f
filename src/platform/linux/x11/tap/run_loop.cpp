#include "platform/linux/x11/tap/run_loop.h"

#include <algorithm>
#include <chrono>

namespace quil::linux_platform {
namespace {

/// How often a loop looks around that could get no descriptor to be woken by.
constexpr std::chrono::milliseconds kWakePollInterval{50};
/// What follows within this time is processed at once: in a flood, waking up is what costs.
constexpr std::chrono::milliseconds kGathering{10};

}  // namespace

void TapRunLoop::add(const std::shared_ptr<TapSource>& source) {
    {
        const std::lock_guard guard(lock_);
        if (std::ranges::find(sources_, source) == sources_.end()) sources_.push_back(source);
    }
    wake();
}

void TapRunLoop::remove(const std::shared_ptr<TapSource>& source) {
    {
        const std::lock_guard guard(lock_);
        std::erase(sources_, source);
    }
    wake();
}

void TapRunLoop::stop() {
    {
        const std::lock_guard guard(lock_);
        if (isRunning_) isStopped_ = true;
    }
    wake();
}

void TapRunLoop::run() {
    {
        const std::lock_guard guard(lock_);
        isRunning_ = true;
    }
    for (;;) {
        // First what has arrived already, of which the descriptors do not tell.
        for (const auto& source : validSources()) {
            if (!source->isValid()) continue;
            current_ = &source->tap();
            source->tap().dispatch();
            current_ = nullptr;
        }
        const auto sources = validSources();
        if (sources.empty()) break;
        if (wake_.wait(kGathering)) {
            wake_.clear();
        } else {
            wait(sources);
        }
    }
    const std::lock_guard guard(lock_);
    isRunning_ = isStopped_ = false;
}

/// The sources to be served; none once the loop is to end.
std::vector<std::shared_ptr<TapSource>> TapRunLoop::validSources() {
    const std::lock_guard guard(lock_);
    std::erase_if(sources_, [](const auto& source) { return !source->isValid(); });
    if (!isStopped_ && !sources_.empty()) return sources_;
    return {};
}

void TapRunLoop::wait(const std::vector<std::shared_ptr<TapSource>>& sources) const {
    std::vector<pollfd> descriptors;
    auto timeout = std::chrono::milliseconds::max();
    for (const auto& source : sources) {
        timeout = std::min(timeout, source->tap().prepareToWait(descriptors));
    }
    if (wake_.isValid()) {
        descriptors.push_back({wake_.descriptor(), POLLIN, 0});
    } else {
        timeout = std::min(timeout, kWakePollInterval);
    }
    const bool isLimited = timeout != std::chrono::milliseconds::max();
    poll(descriptors.data(), descriptors.size(),
         isLimited ? static_cast<int>(timeout.count()) : -1);
    wake_.clear();
}

}  // namespace quil::linux_platform
