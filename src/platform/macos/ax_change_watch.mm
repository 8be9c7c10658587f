#import "platform/macos/ax_change_watch.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#import "platform/macos/ns_strings.h"

namespace quil::macos {
namespace {

using Seconds = std::chrono::duration<double>;

/// How often it is looked which application is in front: its notification needs the main thread.
constexpr Seconds kFrontInterval{0.05};

/// AXNotificationConstants.h.
constexpr const char* kNotifications[] = {
    "AXValueChanged",
    "AXTitleChanged",
    "AXUIElementDestroyed",
    "AXCreated",
    "AXLayoutChanged",
    "AXFocusedUIElementChanged",
    "AXFocusedWindowChanged",
    "AXMainWindowChanged",
    "AXWindowCreated",
    "AXWindowMoved",
    "AXWindowResized",
    "AXWindowMiniaturized",
    "AXWindowDeminiaturized",
    "AXSelectedTextChanged",
    "AXSelectedChildrenChanged",
    "AXSelectedRowsChanged",
    "AXRowCountChanged",
    "AXRowExpanded",
    "AXRowCollapsed",
    "AXMenuOpened",
    "AXMenuClosed",
    "AXResized",
    "AXMoved",
    "AXSheetCreated",
    "AXElementBusyChanged",
};

Seconds uptime() {
    return Seconds([NSProcessInfo processInfo].systemUptime);
}

std::int32_t frontmostProcess() {
    NSRunningApplication* front = [NSWorkspace sharedWorkspace].frontmostApplication;
    return front ? front.processIdentifier : 0;
}

}  // namespace

std::unique_ptr<AxChangeWatch> AxChangeWatch::begin(std::int32_t pid) {
    return std::unique_ptr<AxChangeWatch>(new AxChangeWatch(pid));
}

AxChangeWatch::AxChangeWatch(std::int32_t pid) : front_(frontmostProcess()) {
    AXObserverRef observer = nullptr;
    if (pid == 0 || AXObserverCreate(pid, notified, &observer) != kAXErrorSuccess) return;
    observer_ = CfRef<AXObserverRef>::adopt(observer);
    const auto application = CfRef<AXUIElementRef>::adopt(AXUIElementCreateApplication(pid));
    for (const char* name : kNotifications) {
        NSString* notification = nsString(name);
        AXObserverAddNotification(observer_.get(), application.get(),
                                  (__bridge CFStringRef)notification, this);
    }
    CFRunLoopAddSource(CFRunLoopGetCurrent(), AXObserverGetRunLoopSource(observer_.get()),
                       kCFRunLoopDefaultMode);
}

AxChangeWatch::~AxChangeWatch() {
    if (!observer_) return;
    CFRunLoopRemoveSource(CFRunLoopGetCurrent(), AXObserverGetRunLoopSource(observer_.get()),
                          kCFRunLoopDefaultMode);
}

void AxChangeWatch::notified(AXObserverRef, AXUIElementRef, CFStringRef, void* watch) {
    static_cast<AxChangeWatch*>(watch)->noticed_ = true;
}

bool AxChangeWatch::wait(std::uint64_t microseconds) {
    const Seconds deadline = uptime() + std::chrono::microseconds(microseconds);
    for (;;) {
        const std::int32_t front = frontmostProcess();
        if (std::exchange(front_, front) != front) noticed_ = true;
        if (std::exchange(noticed_, false)) return true;
        const Seconds left = deadline - uptime();
        if (left <= Seconds(0)) return false;
        const Seconds slice = std::min(left, kFrontInterval);
        // A run loop without sources returns at once.
        if (CFRunLoopRunInMode(kCFRunLoopDefaultMode, slice.count(), true) ==
            kCFRunLoopRunFinished) {
            std::this_thread::sleep_for(slice);
        }
    }
}

}  // namespace quil::macos
