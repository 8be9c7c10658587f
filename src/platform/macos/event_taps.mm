#import "platform/macos/event_taps.h"

#import <ApplicationServices/ApplicationServices.h>
#import <Carbon/Carbon.h>

#include <atomic>

#import "platform/macos/cf_ref.h"
#import "platform/macos/tapped_event.h"

namespace quil::macos {
namespace {

struct MacEventTap : EventTap {
    explicit MacEventTap(EventTapCallback function) : callback(std::move(function)) {}

    const EventTapCallback callback;
    std::atomic<bool> valid = true;
    CfRef<CFMachPortRef> port;
};

struct MacRunLoopSource : RunLoopSource {
    MacRunLoopSource(std::shared_ptr<MacEventTap> served, CfRef<CFRunLoopSourceRef> object)
        : tap(std::move(served)), source(std::move(object)) {}

    const std::shared_ptr<MacEventTap> tap;
    const CfRef<CFRunLoopSourceRef> source;
};

struct MacRunLoop : RunLoop {
    explicit MacRunLoop(CfRef<CFRunLoopRef> object) : runLoop(std::move(object)) {}
    const CfRef<CFRunLoopRef> runLoop;
};

MacEventTap& own(const EventTapRef& tap) {
    return static_cast<MacEventTap&>(*tap);
}

CFRunLoopSourceRef handleOf(const RunLoopSourceRef& source) {
    return static_cast<const MacRunLoopSource&>(*source).source.get();
}

CFRunLoopRef handleOf(const RunLoopRef& runLoop) {
    return static_cast<const MacRunLoop&>(*runLoop).runLoop.get();
}

/// Runs on the thread whose run loop has the tap's source. That thread holds the tap, so the
/// pointer is good for as long as events can come.
CGEventRef deliver(CGEventTapProxy, CGEventType type, CGEventRef event, void* userInfo) {
    const auto& tap = *static_cast<const MacEventTap*>(userInfo);
    @autoreleasepool {
        if (tap.valid) tap.callback(type, MacTappedEvent(event));
    }
    return event;
}

}  // namespace

EventTapRef MacEventTaps::createTap(std::uint32_t location, std::uint32_t placement,
                                    std::uint32_t options, std::uint64_t mask,
                                    EventTapCallback callback) {
    auto tap = std::make_shared<MacEventTap>(std::move(callback));
    tap->port = CfRef<CFMachPortRef>::adopt(CGEventTapCreate(
        static_cast<CGEventTapLocation>(location), static_cast<CGEventTapPlacement>(placement),
        static_cast<CGEventTapOptions>(options), mask, deliver, tap.get()));
    if (!tap->port) return nullptr;
    return tap;
}

void MacEventTaps::enableTap(const EventTapRef& tap, bool enable) {
    if (own(tap).valid) CGEventTapEnable(own(tap).port.get(), enable);
}

void MacEventTaps::invalidateTap(const EventTapRef& tap) {
    own(tap).valid = false;
    CFMachPortInvalidate(own(tap).port.get());
}

RunLoopSourceRef MacEventTaps::createRunLoopSource(const EventTapRef& tap) {
    auto source = CfRef<CFRunLoopSourceRef>::adopt(
        CFMachPortCreateRunLoopSource(kCFAllocatorDefault, own(tap).port.get(), 0));
    if (!source) return nullptr;
    return std::make_shared<MacRunLoopSource>(std::static_pointer_cast<MacEventTap>(tap),
                                              std::move(source));
}

RunLoopRef MacEventTaps::currentRunLoop() {
    return std::make_shared<MacRunLoop>(CfRef<CFRunLoopRef>::share(CFRunLoopGetCurrent()));
}

void MacEventTaps::addSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) {
    CFRunLoopAddSource(handleOf(runLoop), handleOf(source), kCFRunLoopCommonModes);
}

void MacEventTaps::removeSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) {
    CFRunLoopRemoveSource(handleOf(runLoop), handleOf(source), kCFRunLoopCommonModes);
}

void MacEventTaps::invalidateSource(const RunLoopSourceRef& source) {
    CFRunLoopSourceInvalidate(handleOf(source));
}

void MacEventTaps::runCurrentRunLoop() {
    CFRunLoopRun();
}

void MacEventTaps::stopRunLoop(const RunLoopRef& runLoop) {
    CFRunLoopStop(handleOf(runLoop));
}

bool MacEventTaps::isSecureEventInputEnabled() {
    return IsSecureEventInputEnabled();
}

}  // namespace quil::macos
