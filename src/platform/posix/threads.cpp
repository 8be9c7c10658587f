#include "platform/posix/threads.h"

#include <pthread.h>

#include <algorithm>
#include <system_error>

namespace quil {
namespace {

/// The most that Linux keeps of a thread's name (pthread_setname_np), without its final NUL.
constexpr std::size_t kMaximumNameLength = 15;

class StartedThread : public ThreadHandle {};

void nameCurrentThread(const std::string& name) {
    const std::string kept = name.substr(0, kMaximumNameLength);
#ifdef __APPLE__
    pthread_setname_np(kept.c_str());
#else
    pthread_setname_np(pthread_self(), kept.c_str());
#endif
}

}  // namespace

PosixThreads::~PosixThreads() {
    for (;;) {
        std::vector<Running> threads;
        {
            const std::lock_guard guard(lock_);
            threads.swap(threads_);
        }
        if (threads.empty()) return;
        for (Running& running : threads) running.thread.join();
    }
}

ThreadRef PosixThreads::startThread(const std::string& name, QualityOfService,
                                    std::function<void()> body) {
    {
        // First, so that those that have ended make room for this one.
        const std::lock_guard guard(lock_);
        reapEnded();
    }
    const auto ended = std::make_shared<bool>(false);
    try {
        std::thread thread([this, name, body = std::move(body), ended]() mutable {
            nameCurrentThread(name);
            body();
            body = nullptr;  // what the body holds is released on its own thread
            const std::lock_guard guard(lock_);
            *ended = true;
        });
        const std::lock_guard guard(lock_);
        threads_.push_back({std::move(thread), ended});
    } catch (const std::system_error&) {
        return nullptr;
    }
    return std::make_shared<StartedThread>();
}

/// Joins threads that have run to their end, so that starting many does not pile them up.
void PosixThreads::reapEnded() {
    const auto running = std::partition(threads_.begin(), threads_.end(),
                                        [](const Running& entry) { return !*entry.ended; });
    for (auto entry = running; entry != threads_.end(); ++entry) entry->thread.join();
    threads_.erase(running, threads_.end());
}

void PosixThreads::runMainRunLoop() {
    std::unique_lock guard(lock_);
    stopped_.wait(guard, [this] { return stopRequested_; });
}

void PosixThreads::stopMainRunLoop() {
    const std::lock_guard guard(lock_);
    stopRequested_ = true;
    stopped_.notify_all();
}

}  // namespace quil
