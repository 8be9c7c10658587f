// Core Graphics, as far as the Mac backend uses it.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

extern "C" {

using CGFloat = double;
struct CGPoint {
    CGFloat x, y;
};
struct CGSize {
    CGFloat width, height;
};
struct CGRect {
    CGPoint origin;
    CGSize size;
};
inline CGPoint CGPointMake(CGFloat x, CGFloat y) {
    return {x, y};
}
using CGImageRef = struct CGImage*;

// Displays.
using CGDirectDisplayID = std::uint32_t;
enum CGError : std::int32_t {};
CGError CGGetActiveDisplayList(std::uint32_t capacity, CGDirectDisplayID* displays,
                               std::uint32_t* count);
CGRect CGDisplayBounds(CGDirectDisplayID display);
CGDirectDisplayID CGMainDisplayID();

// Windows. Option sets are plain integers in C++.
using CGWindowID = std::uint32_t;
using CGWindowListOption = std::uint32_t;
CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow);

// Permissions.
bool CGPreflightScreenCaptureAccess();
bool CGPreflightListenEventAccess();
bool CGRequestListenEventAccess();

// Events.
using CGEventRef = struct __CGEvent*;
using CGEventSourceRef = struct __CGEventSource*;
using CGEventTapProxy = struct __CGEventTapProxy*;
using CGEventMask = std::uint64_t;
using CGEventTimestamp = std::uint64_t;
using CGKeyCode = std::uint16_t;

enum CGEventType : std::uint32_t {
    kCGEventKeyDown = 10,
    kCGEventKeyUp = 11,
};
using CGEventFlags = std::uint64_t;
enum CGMouseButton : std::uint32_t {};
enum CGScrollEventUnit : std::uint32_t {};
enum CGEventSourceStateID : std::int32_t {};
enum CGEventField : std::uint32_t {
    kCGKeyboardEventKeycode = 9,
    kCGScrollWheelEventDeltaAxis1 = 11,
};
enum CGEventTapLocation : std::uint32_t { kCGSessionEventTap = 1 };
enum CGEventTapPlacement : std::uint32_t {};
enum CGEventTapOptions : std::uint32_t { kCGEventTapOptionListenOnly = 1 };
using CGEventTapCallBack = CGEventRef (*)(CGEventTapProxy proxy, CGEventType type, CGEventRef event,
                                          void* userInfo);

CGEventSourceRef CGEventSourceCreate(CGEventSourceStateID state);
CGEventRef CGEventCreateMouseEvent(CGEventSourceRef source, CGEventType type, CGPoint location,
                                   CGMouseButton button);
CGEventRef CGEventCreateScrollWheelEvent2(CGEventSourceRef source, CGScrollEventUnit units,
                                          std::uint32_t wheelCount, std::int32_t wheel1,
                                          std::int32_t wheel2, std::int32_t wheel3);
CGEventRef CGEventCreateKeyboardEvent(CGEventSourceRef source, CGKeyCode keyCode, bool keyDown);
void CGEventKeyboardSetUnicodeString(CGEventRef event, UniCharCount length, const UniChar* text);
void CGEventPost(CGEventTapLocation tap, CGEventRef event);

CGPoint CGEventGetLocation(CGEventRef event);
void CGEventSetLocation(CGEventRef event, CGPoint location);
CGEventTimestamp CGEventGetTimestamp(CGEventRef event);
CGEventFlags CGEventGetFlags(CGEventRef event);
void CGEventSetFlags(CGEventRef event, CGEventFlags flags);
std::int64_t CGEventGetIntegerValueField(CGEventRef event, CGEventField field);
void CGEventSetIntegerValueField(CGEventRef event, CGEventField field, std::int64_t value);

CFMachPortRef CGEventTapCreate(CGEventTapLocation tap, CGEventTapPlacement place,
                               CGEventTapOptions options, CGEventMask eventsOfInterest,
                               CGEventTapCallBack callback, void* userInfo);
void CGEventTapEnable(CFMachPortRef tap, bool enable);

}  // extern "C"
