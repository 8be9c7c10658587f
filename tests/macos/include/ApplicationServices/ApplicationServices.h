// Application Services, as far as the Mac backend uses it: the accessibility client interface, and
// Core Graphics.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>

extern "C" {

typedef const struct QUIL_BRIDGED(id) __AXUIElement* AXUIElementRef;
typedef const struct QUIL_BRIDGED(id) __AXValue* AXValueRef;

enum AXError : SInt32 {
    kAXErrorSuccess = 0,
    kAXErrorFailure = -25200,
    kAXErrorInvalidUIElement = -25202,
    kAXErrorCannotComplete = -25204,
    kAXErrorActionUnsupported = -25206,
    kAXErrorNotImplemented = -25208,
    kAXErrorAPIDisabled = -25211,
    kAXErrorNoValue = -25212,
};
enum AXValueType : UInt32 {
    kAXValueTypeCGPoint = 1,
    kAXValueTypeCGSize = 2,
    kAXValueTypeAXError = 5,
};
using AXCopyMultipleAttributeOptions = UInt32;

Boolean AXIsProcessTrusted();

CFTypeID AXUIElementGetTypeID();
AXUIElementRef AXUIElementCreateApplication(pid_t pid);
AXError AXUIElementGetPid(AXUIElementRef element, pid_t* pid);
AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                      CFTypeRef* value);
AXError AXUIElementCopyMultipleAttributeValues(AXUIElementRef element, CFArrayRef attributes,
                                               AXCopyMultipleAttributeOptions options,
                                               CFArrayRef* values);
AXError AXUIElementCopyActionNames(AXUIElementRef element, CFArrayRef* names);
AXError AXUIElementPerformAction(AXUIElementRef element, CFStringRef action);
AXError AXUIElementSetAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                     CFTypeRef value);

using AXObserverRef = struct __AXObserver*;
using AXObserverCallback = void (*)(AXObserverRef observer, AXUIElementRef element,
                                    CFStringRef notification, void* context);
AXError AXObserverCreate(pid_t pid, AXObserverCallback callback, AXObserverRef* observer);
AXError AXObserverAddNotification(AXObserverRef observer, AXUIElementRef element,
                                  CFStringRef notification, void* context);
CFRunLoopSourceRef AXObserverGetRunLoopSource(AXObserverRef observer);

CFTypeID AXValueGetTypeID();
Boolean AXValueGetValue(AXValueRef value, AXValueType type, void* result);

}  // extern "C"
