#import "platform/macos/threads.h"

#import <Foundation/Foundation.h>

#include <condition_variable>
#include <mutex>

#import "platform/macos/ns_strings.h"

namespace quil::macos {
namespace {

/// What the main thread has; a thread gets far less by default.
constexpr NSUInteger kStackSize = 8 << 20;

NSQualityOfService platformQuality(QualityOfService qualityOfService) {
    return qualityOfService == QualityOfService::userInitiated ? NSQualityOfServiceUserInitiated
                                                               : NSQualityOfServiceDefault;
}

}  // namespace

/// Counts the threads that have not ended; shared with them.
class MacThreads::Running {
  public:
    void begin() {
        const std::lock_guard guard(lock_);
        ++count_;
    }
    void end() {
        const std::lock_guard guard(lock_);
        --count_;
        changed_.notify_all();
    }
    void awaitNone() {
        std::unique_lock guard(lock_);
        changed_.wait(guard, [this] { return count_ == 0; });
    }

  private:
    std::mutex lock_;
    std::condition_variable changed_;
    int count_ = 0;
};

MacThreads::MacThreads() : running_(std::make_shared<Running>()) {
    CFRunLoopSourceContext context{};
    context.info = &stopped_;
    context.perform = [](void* info) { *static_cast<bool*>(info) = true; };
    stopSource_ =
        CfRef<CFRunLoopSourceRef>::adopt(CFRunLoopSourceCreate(kCFAllocatorDefault, 0, &context));
    CFRunLoopAddSource(CFRunLoopGetMain(), stopSource_.get(), kCFRunLoopCommonModes);
}

MacThreads::~MacThreads() {
    running_->awaitNone();
    CFRunLoopSourceInvalidate(stopSource_.get());
}

ThreadRef MacThreads::startThread(const std::string& name, QualityOfService qualityOfService,
                                  std::function<void()> body) {
    const auto running = running_;
    const auto work = std::make_shared<std::function<void()>>(std::move(body));
    NSThread* thread = [[NSThread alloc] initWithBlock:^{
      @autoreleasepool {
          (*work)();
          *work = nullptr;  // what the body holds is released before anyone sees the thread ended
      }
      running->end();
    }];
    thread.name = nsString(name);
    thread.qualityOfService = platformQuality(qualityOfService);
    thread.stackSize = kStackSize;
    running->begin();
    [thread start];
    return std::make_shared<ThreadHandle>();
}

void MacThreads::autoreleasePool(const std::function<void()>& body) {
    @autoreleasepool {
        body();
    }
}

void MacThreads::runMainRunLoop() {
    // Each turn of the loop ends after one source or at the end of all time, whichever is sooner.
    while (!stopped_) {
        @autoreleasepool {
            [[NSRunLoop mainRunLoop] runMode:NSDefaultRunLoopMode
                                  beforeDate:[NSDate distantFuture]];
        }
    }
}

void MacThreads::stopMainRunLoop() {
    CFRunLoopSourceSignal(stopSource_.get());
    CFRunLoopWakeUp(CFRunLoopGetMain());
}

}  // namespace quil::macos
