#pragma once

#import <ApplicationServices/ApplicationServices.h>

#include <memory>

#include "platform/accessibility.h"
#include "platform/macos/cf_ref.h"

namespace quil::macos {

/// Notices an application's accessibility notifications, and another application in front. Used on
/// one thread, in whose run loop the notifications arrive while `wait` runs it.
class AxChangeWatch : public ChangeWatch {
  public:
    /// Watches the application with that process id; without an observer (the application allows
    /// none, or `pid` is 0) only which application is in front.
    static std::unique_ptr<AxChangeWatch> begin(std::int32_t pid);
    ~AxChangeWatch() override;
    AxChangeWatch(const AxChangeWatch&) = delete;
    AxChangeWatch& operator=(const AxChangeWatch&) = delete;

    bool wait(std::uint64_t microseconds) override;

  private:
    explicit AxChangeWatch(std::int32_t pid);
    static void notified(AXObserverRef observer, AXUIElementRef element, CFStringRef notification,
                         void* watch);

    CfRef<AXObserverRef> observer_;
    /// The application that was in front; 0 for none.
    std::int32_t front_;
    bool noticed_ = false;
};

}  // namespace quil::macos
