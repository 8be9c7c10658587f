#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace quil::macos {

/// Where a completion handler, on a thread of the platform's, leaves its result for a call that
/// waits for it. The two share it, since the handler may come after the call has given up.
template <typename T>
class CompletionResult {
  public:
    void deliver(T result) {
        const std::lock_guard guard(lock_);
        result_ = std::move(result);
        delivered_ = true;
        changed_.notify_all();
    }

    /// The result; an empty one when none has come in that time.
    T await(std::chrono::milliseconds atMost) {
        std::unique_lock guard(lock_);
        if (!changed_.wait_for(guard, atMost, [this] { return delivered_; })) return T();
        return std::move(result_);
    }

  private:
    std::mutex lock_;
    std::condition_variable changed_;
    bool delivered_ = false;
    T result_ = T();
};

}  // namespace quil::macos
