#import "platform/macos/call_thread.h"

#import <Foundation/Foundation.h>

#include <condition_variable>
#include <mutex>

#import "platform/macos/ns_strings.h"

namespace quil::macos {

/// Shared with the thread, which may outlive its owner.
class CallThread::Queue {
  public:
    /// False when a call is under way. Sets `first` for the first call of all.
    bool put(Call call, bool& first) {
        const std::lock_guard guard(lock_);
        if (busy_) return false;
        busy_ = true;
        next_ = std::move(call);
        first = !std::exchange(started_, true);
        changed_.notify_all();
        return true;
    }

    void end() {
        const std::lock_guard guard(lock_);
        ended_ = true;
        changed_.notify_all();
    }

    void serve() {
        while (const Call call = take()) {
            @autoreleasepool {
                const auto deliver = call();
                done();
                deliver();
            }
        }
    }

  private:
    /// The next call; an empty one when there will be none.
    Call take() {
        std::unique_lock guard(lock_);
        changed_.wait(guard, [this] { return next_ || ended_; });
        return std::exchange(next_, nullptr);
    }
    void done() {
        const std::lock_guard guard(lock_);
        busy_ = false;
    }

    std::mutex lock_;
    std::condition_variable changed_;
    Call next_;
    bool started_ = false;
    bool busy_ = false;
    bool ended_ = false;
};

CallThread::CallThread(std::string name)
    : name_(std::move(name)), queue_(std::make_shared<Queue>()) {}

CallThread::~CallThread() {
    queue_->end();
}

bool CallThread::begin(Call call) {
    bool first = false;
    if (!queue_->put(std::move(call), first)) return false;
    if (first) {
        const auto queue = queue_;
        NSThread* thread = [[NSThread alloc] initWithBlock:^{
          queue->serve();
        }];
        thread.name = nsString(name_);
        [thread start];
    }
    return true;
}

}  // namespace quil::macos
