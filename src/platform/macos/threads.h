#pragma once

#import <CoreFoundation/CoreFoundation.h>

#include <memory>

#include "platform/macos/cf_ref.h"
#include "platform/threads.h"

namespace quil::macos {

/// NSThread and the main NSRunLoop. To be made on any thread, used as `Threads` says.
class MacThreads : public Threads {
  public:
    MacThreads();
    ~MacThreads() override;
    MacThreads(const MacThreads&) = delete;
    MacThreads& operator=(const MacThreads&) = delete;

    ThreadRef startThread(const std::string& name, QualityOfService qualityOfService,
                          std::function<void()> body) override;
    void autoreleasePool(const std::function<void()>& body) override;
    void runMainRunLoop() override;
    void stopMainRunLoop() override;

  private:
    class Running;

    std::shared_ptr<Running> running_;
    bool stopped_ = false;  // main thread only
    /// Signalled to stop the main run loop, which remembers the signal until it runs. Being there
    /// it also keeps the loop from ending for lack of sources.
    CfRef<CFRunLoopSourceRef> stopSource_;
};

}  // namespace quil::macos
