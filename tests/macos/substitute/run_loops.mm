// Run loops. Those of the taps' threads are the simulated ones; the main thread's is here: it
// performs blocks and signalled sources, and wakes only when it is told to.
#import <Foundation/Foundation.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>

#include "run_loops.h"

using namespace quil;
using namespace quil::substitute;

@implementation RunLoopObject
@end
@implementation MachPort
@end
@implementation RunLoopSourceObject
@end
@implementation AXObserverObject
@end
@implementation NSRunLoop
+ (NSRunLoop*)mainRunLoop {
    static NSRunLoop* loop = singleton([[NSRunLoop alloc] init]);
    return loop;
}
- (BOOL)runMode:(NSRunLoopMode)mode beforeDate:(NSDate*)limit {
    mainThreadOnly();
    return runMainLoopOnce();
}
@end

namespace {

struct MainLoop {
    std::mutex mutex;
    std::condition_variable changed;
    bool woken = false;
    std::deque<void (^)(void)> blocks;
    std::vector<RunLoopSourceObject*> sources;
};
MainLoop& mainLoop() {
    static auto& loop = *new MainLoop;
    return loop;
}

RunLoopObject* mainLoopObject() {
    static RunLoopObject* object = singleton([[RunLoopObject alloc] init]);
    return object;
}

struct OfThread {
    RunLoopObject* loop;
    /// Those that the thread's run loop serves.
    std::vector<AXObserverObject*> observers;
};
thread_local OfThread ofThread;

RunLoopObject* own(CFRunLoopRef loop, const char* call = __builtin_FUNCTION()) {
    return substitute::own<RunLoopObject>(loop, call);
}
RunLoopSourceObject* own(CFRunLoopSourceRef source, const char* call = __builtin_FUNCTION()) {
    return substitute::own<RunLoopSourceObject>(source, call);
}

void commonModesOnly(CFTypeRef mode, const char* call = __builtin_FUNCTION()) {
    if (mode != kCFRunLoopCommonModes) violation(std::string(call) + ": not in the common modes");
}

/// Has the work that waits done; whether there was a source among it.
bool performWaiting(std::unique_lock<std::mutex>& guard) {
    MainLoop& loop = mainLoop();
    while (!loop.blocks.empty()) {
        @autoreleasepool {
            void (^block)(void) = loop.blocks.front();
            loop.blocks.pop_front();
            guard.unlock();
            substitute::block("mainRunLoop");
            block();
            block = nil;
            guard.lock();
        }
    }
    const auto signalled = std::find_if(loop.sources.begin(), loop.sources.end(), [](auto* source) {
        return source->valid && source->signalled;
    });
    if (signalled == loop.sources.end()) return false;
    RunLoopSourceObject* source = *signalled;
    source->signalled = false;
    guard.unlock();
    source->context.perform(source->context.info);
    guard.lock();
    return true;
}

}  // namespace

namespace quil::substitute {

bool runMainLoopOnce() {
    MainLoop& loop = mainLoop();
    std::unique_lock guard(loop.mutex);
    if (loop.sources.empty()) return false;
    for (;;) {
        if (performWaiting(guard)) return true;
        loop.changed.wait(guard, [&] { return loop.woken; });
        loop.woken = false;
    }
}

void forgetRunLoop() {
    ofThread.loop = nil;
    static_cast<simulated::SimulatedEventTaps&>(services->eventTaps()).endThread();
}

void emptyMainLoop() {
    std::deque<void (^)(void)> blocks;
    const std::lock_guard guard(mainLoop().mutex);
    blocks.swap(mainLoop().blocks);
}

}  // namespace quil::substitute

extern "C" {

const CFRunLoopMode kCFRunLoopDefaultMode = (__bridge CFStringRef) @"kCFRunLoopDefaultMode";
const CFRunLoopMode kCFRunLoopCommonModes = (__bridge CFStringRef) @"kCFRunLoopCommonModes";
const NSRunLoopMode NSDefaultRunLoopMode = @"kCFRunLoopDefaultMode";

CFRunLoopRef CFRunLoopGetMain() {
    return (CFRunLoopRef)(__bridge void*)mainLoopObject();
}
CFRunLoopRef CFRunLoopGetCurrent() {
    if (onMainThread()) return CFRunLoopGetMain();
    if (!ofThread.loop) {
        ofThread.loop = [[RunLoopObject alloc] init];
        ofThread.loop->loop = services->eventTaps().currentRunLoop();
    }
    return (CFRunLoopRef)(__bridge void*)ofThread.loop;
}
void CFRunLoopRun() {
    if (onMainThread()) violation("CFRunLoopRun: the main run loop is run by NSRunLoop");
    services->eventTaps().runCurrentRunLoop();
}
void CFRunLoopStop(CFRunLoopRef loop) {
    services->eventTaps().stopRunLoop(own(loop)->loop);
}
void CFRunLoopWakeUp(CFRunLoopRef loop) {
    if (own(loop) != mainLoopObject()) return;
    const std::lock_guard guard(mainLoop().mutex);
    mainLoop().woken = true;
    mainLoop().changed.notify_all();
}
void CFRunLoopPerformBlock(CFRunLoopRef loop, CFTypeRef mode, void (^block)(void)) {
    commonModesOnly(mode);
    if (own(loop) != mainLoopObject()) {
        violation("CFRunLoopPerformBlock: on a tap's thread nothing would perform it");
    }
    const std::lock_guard guard(mainLoop().mutex);
    mainLoop().blocks.push_back(block);
}

CFRunLoopSourceRef CFRunLoopSourceCreate(CFAllocatorRef, CFIndex, CFRunLoopSourceContext* context) {
    if (!context || context->version != 0) violation("CFRunLoopSourceCreate: version 0 is meant");
    RunLoopSourceObject* source = [[RunLoopSourceObject alloc] init];
    source->context = *context;
    source->valid = true;
    return handedOver<CFRunLoopSourceRef>(source);
}
void CFRunLoopSourceSignal(CFRunLoopSourceRef source) {
    const std::lock_guard guard(mainLoop().mutex);
    own(source)->signalled = true;
}
void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef reference, CFRunLoopMode mode) {
    RunLoopSourceObject* source = own(reference);
    if (source->observer) {
        if (onMainThread()) violation("an observer is served by the thread that waits");
        ofThread.observers.push_back(source->observer);
        return;
    }
    commonModesOnly(mode);
    RunLoopObject* target = own(loop);
    if (source->served) return services->eventTaps().addSource(target->loop, source->served);
    const std::lock_guard guard(mainLoop().mutex);
    if (source->valid) mainLoop().sources.push_back(source);
}
CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode, double seconds, Boolean) {
    if (ofThread.observers.empty()) return kCFRunLoopRunFinished;
    AXObserverObject* observer = ofThread.observers.front();
    if (observer->watch->wait(static_cast<std::uint64_t>(seconds * 1e6) + 1)) {
        for (const auto& [name, context] : observer->notifications) {
            observer->callback((AXObserverRef)(__bridge void*)observer, nullptr,
                               (__bridge CFStringRef)name, context);
        }
    }
    return static_cast<CFRunLoopRunResult>(0);
}
void CFRunLoopRemoveSource(CFRunLoopRef loop, CFRunLoopSourceRef reference, CFRunLoopMode mode) {
    RunLoopSourceObject* source = own(reference);
    if (source->observer) {
        const auto removed = std::erase(ofThread.observers, source->observer);
        return removed == 1 ? void() : violation("an observer of no run loop");
    }
    commonModesOnly(mode);
    services->eventTaps().removeSource(own(loop)->loop, source->served);
}
void CFRunLoopSourceInvalidate(CFRunLoopSourceRef reference) {
    RunLoopSourceObject* source = own(reference);
    if (source->served) return services->eventTaps().invalidateSource(source->served);
    const std::lock_guard guard(mainLoop().mutex);
    source->valid = false;
    source->signalled = false;
    std::erase(mainLoop().sources, source);
}

CFRunLoopSourceRef CFMachPortCreateRunLoopSource(CFAllocatorRef, CFMachPortRef reference, CFIndex) {
    MachPort* port = substitute::own<MachPort>(reference);
    if (port->life.ended) return nullptr;
    const auto served = services->eventTaps().createRunLoopSource(port->tap);
    if (!served) return nullptr;
    RunLoopSourceObject* source = [[RunLoopSourceObject alloc] init];
    source->served = served;
    source->port = port;
    return handedOver<CFRunLoopSourceRef>(source);
}
void CFMachPortInvalidate(CFMachPortRef reference) {
    MachPort* port = substitute::own<MachPort>(reference);
    port->life.ended = true;
    services->eventTaps().invalidateTap(port->tap);
}

AXError AXObserverCreate(pid_t pid, AXObserverCallback callback, AXObserverRef* observer) {
    AXObserverObject* object = [[AXObserverObject alloc] init];
    object->watch = services->accessibility().watchChanges(pid);
    if (!object->watch) return kAXErrorCannotComplete;
    object->callback = callback;
    *observer = handedOver<AXObserverRef>(object);
    return kAXErrorSuccess;
}
AXError AXObserverAddNotification(AXObserverRef observer, AXUIElementRef element,
                                  CFStringRef notification, void* context) {
    substitute::own<UIElement>(element);
    substitute::own<AXObserverObject>(observer)->notifications.emplace_back(
        (__bridge NSString*)notification, context);
    return kAXErrorSuccess;
}
/// Belongs to the observer.
CFRunLoopSourceRef AXObserverGetRunLoopSource(AXObserverRef reference) {
    auto* observer = substitute::own<AXObserverObject>(reference);
    if (!observer->source) {
        observer->source = [[RunLoopSourceObject alloc] init];
        observer->source->observer = observer;
    }
    return (CFRunLoopSourceRef)(__bridge void*)observer->source;
}

}  // extern "C"
