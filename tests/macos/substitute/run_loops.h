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
@interface RunLoopSourceObject : NSObject {
  @public
    // Of a tap.
    quil::RunLoopSourceRef served;
    MachPort* port;
    // Of the main run loop.
    CFRunLoopSourceContext context;
    bool valid, signalled;
}
@end
