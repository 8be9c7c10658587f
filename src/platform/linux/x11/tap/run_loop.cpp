#include "platform/linux/x11/tap/run_loop.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

namespace quil::linux_platform {
namespace {

/// How often a loop looks around that could get no descriptor to be woken by.
constexpr std::chrono::milliseconds kWakePollInterval{50};
/// What follows within this time is dealt with at once: in a flood, waking up is what costs.
constexpr std::chrono::milliseconds kGathering{10};

}  // namespace

TapRunLoop::TapRunLoop() : wakeDescriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

TapRunLoop::~TapRunLoop() {
    if (wakeDescriptor_ >= 0) close(wakeDescriptor_);
}

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

void TapRunLoop::wake() {
    const std::uint64_t one = 1;
    if (wakeDescriptor_ >= 0) (void)!write(wakeDescriptor_, &one, sizeof one);
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
        if (!isWoken(kGathering)) wait(sources);
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
    if (wakeDescriptor_ >= 0) {
        descriptors.push_back({wakeDescriptor_, POLLIN, 0});
    } else {
        timeout = std::min(timeout, kWakePollInterval);
    }
    const bool isLimited = timeout != std::chrono::milliseconds::max();
    poll(descriptors.data(), descriptors.size(),
         isLimited ? static_cast<int>(timeout.count()) : -1);
    clearWaking();
}

/// Whether somebody wakes the loop within that time.
bool TapRunLoop::isWoken(std::chrono::milliseconds timeout) const {
    pollfd descriptor{wakeDescriptor_, POLLIN, 0};
    const bool isWoken = poll(&descriptor, 1, static_cast<int>(timeout.count())) > 0;
    if (isWoken) clearWaking();
    return isWoken;
}

void TapRunLoop::clearWaking() const {
    std::uint64_t times = 0;
    if (wakeDescriptor_ >= 0) (void)!read(wakeDescriptor_, &times, sizeof times);
}

}  // namespace quil::linux_platform
