#include "platform/linux/x11/tap/event_taps.h"

#include <utility>

namespace quil::linux_platform {
namespace {

std::shared_ptr<InputTap> own(const EventTapRef& tap) {
    return std::static_pointer_cast<InputTap>(tap);
}

std::shared_ptr<TapSource> own(const RunLoopSourceRef& source) {
    return std::static_pointer_cast<TapSource>(source);
}

TapRunLoop& own(const RunLoopRef& runLoop) {
    return static_cast<TapRunLoop&>(*runLoop);
}

}  // namespace

EventTapRef X11EventTaps::createTap(std::uint32_t, std::uint32_t, std::uint32_t, std::uint64_t mask,
                                    EventTapCallback callback) {
    return InputTap::open(mask, std::move(callback));
}

void X11EventTaps::enableTap(const EventTapRef& tap, bool enable) {
    own(tap)->enable(enable);
}

void X11EventTaps::invalidateTap(const EventTapRef& tap) {
    own(tap)->invalidate();
    wakeLoops();
}

void X11EventTaps::flushTap(const EventTapRef& tap) {
    const int request = own(tap)->requestFlush();
    wakeLoops();
    own(tap)->awaitFlush(request);
}

RunLoopSourceRef X11EventTaps::createRunLoopSource(const EventTapRef& tap) {
    return std::make_shared<TapSource>(own(tap));
}

RunLoopRef X11EventTaps::currentRunLoop() {
    return loopOfThread();
}

void X11EventTaps::addSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) {
    own(runLoop).add(own(source));
}

void X11EventTaps::removeSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) {
    own(runLoop).remove(own(source));
}

void X11EventTaps::invalidateSource(const RunLoopSourceRef& source) {
    own(source)->invalidate();
    wakeLoops();
}

void X11EventTaps::runCurrentRunLoop() {
    loopOfThread()->run();
}

void X11EventTaps::stopRunLoop(const RunLoopRef& runLoop) {
    own(runLoop).stop();
}

bool X11EventTaps::isSecureEventInputEnabled() {
    const InputTap* tap = loopOfThread()->current();
    return tap && tap->isSecureEventInputEnabled();
}

std::shared_ptr<TapRunLoop> X11EventTaps::loopOfThread() {
    const std::lock_guard guard(lock_);
    std::erase_if(loops_, [](const auto& entry) { return entry.second.expired(); });
    auto& entry = loops_[std::this_thread::get_id()];
    auto loop = entry.lock();
    if (!loop) entry = loop = std::make_shared<TapRunLoop>();
    return loop;
}

void X11EventTaps::wakeLoops() {
    const std::lock_guard guard(lock_);
    for (const auto& [thread, entry] : loops_) {
        if (const auto loop = entry.lock()) loop->wake();
    }
}

}  // namespace quil::linux_platform
