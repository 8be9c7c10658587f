#import "platform/macos/main_thread.h"

#import <CoreFoundation/CoreFoundation.h>

namespace quil::macos {

void performOnMainThread(std::function<void()> work) {
    CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopCommonModes, ^{
      @autoreleasepool {
          work();
      }
    });
    CFRunLoopWakeUp(CFRunLoopGetMain());
}

}  // namespace quil::macos
