// What stands behind CFRunLoopRef, CFRunLoopSourceRef and CFMachPortRef.
#pragma once

#include <atomic>

#import "substitute.h"

namespace quil::substitute {

/// Ended by an invalidation, which the owner must not forget.
struct PortLife {
    std::atomic<bool> ended = false;
    ~PortLife() {
        if (!ended) violation("a port was released but never invalidated");
    }
};

/// One turn of the main run loop: returns after a source has been performed; false, at once, when
/// there is none.
bool runMainLoopOnce();
/// Gives up the calling thread's run loop; for a thread that is about to end.
void forgetRunLoop();
/// Drops the blocks that nobody has performed.
void emptyMainLoop();

}  // namespace quil::substitute

@interface RunLoopObject : NSObject {
  @public
    quil::RunLoopRef loop;  // null: the main thread's
}
@end
@interface MachPort : NSObject {
  @public
    quil::EventTapRef tap;
    quil::substitute::PortLife life;
}
@end
@class RunLoopSourceObject;
/// AXObserverRef: notices changes of the simulated desktop, and tells of each with every
/// notification that it was asked for.
@interface AXObserverObject : NSObject {
  @public
    std::unique_ptr<quil::ChangeWatch> watch;
    AXObserverCallback callback;
    std::vector<std::pair<NSString*, void*>> notifications;
    RunLoopSourceObject* source;
}
@end
@interface RunLoopSourceObject : NSObject {
  @public
    // Of a tap.
    quil::RunLoopSourceRef served;
    MachPort* port;
    // Of an observer of notifications.
    __unsafe_unretained AXObserverObject* observer;
    // Of the main run loop.
    CFRunLoopSourceContext context;
    bool valid, signalled;
}
@end
