#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/macos/completion_result.h"

namespace quil::macos {

/// A thread for calls that take as long as another process likes: started with the first of them,
/// it makes one at a time. Destroying it does not wait for a call that is under way.
class CallThread {
  public:
    /// The thread will have that name.
    explicit CallThread(std::string name);
    ~CallThread();
    CallThread(const CallThread&) = delete;
    CallThread& operator=(const CallThread&) = delete;

    /// What the call gives. Nothing when it has not returned in that time (it then goes on without
    /// us), or, at once and without being made, when an earlier one still goes on.
    template <typename T>
    std::optional<T> call(std::chrono::milliseconds atMost, std::function<T()> body) {
        const auto result = std::make_shared<CompletionResult<std::optional<T>>>();
        const bool begun = begin([result, body = std::move(body)] {
            return [result, value = body()] { result->deliver(value); };
        });
        if (!begun) return {};
        return result->await(atMost);
    }

  private:
    /// Makes a call; what it returns is run once the next one may come.
    using Call = std::function<std::function<void()>()>;
    class Queue;

    bool begin(Call call);

    const std::string name_;
    const std::shared_ptr<Queue> queue_;
};

}  // namespace quil::macos
