// Compiles only when the platform's numbers are the ones that the interfaces carry upwards.
#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>
#import <Security/SecCode.h>

#include "platform/accessibility.h"
#include "platform/code_signing.h"
#include "platform/event_posting.h"
#include "platform/event_taps.h"
#include "platform/window_list.h"
#include "platform/workspace.h"

#define SAME(ours, theirs) \
    static_assert(quil::ours == static_cast<decltype(quil::ours)>(theirs), #ours)

SAME(kAxSuccess, kAXErrorSuccess);
SAME(kAxFailure, kAXErrorFailure);
SAME(kAxIllegalArgument, kAXErrorIllegalArgument);
SAME(kAxInvalidUIElement, kAXErrorInvalidUIElement);
SAME(kAxCannotComplete, kAXErrorCannotComplete);
SAME(kAxAttributeUnsupported, kAXErrorAttributeUnsupported);
SAME(kAxActionUnsupported, kAXErrorActionUnsupported);
SAME(kAxNotImplemented, kAXErrorNotImplemented);
SAME(kAxApiDisabled, kAXErrorAPIDisabled);
SAME(kAxNoValue, kAXErrorNoValue);
static_assert(kAXValueTypeCGPoint == 1 && kAXValueTypeCGSize == 2);

SAME(kWindowListOptionOnScreenOnly, kCGWindowListOptionOnScreenOnly);
SAME(kWindowListExcludeDesktopElements, kCGWindowListExcludeDesktopElements);
SAME(kActivationPolicyRegular, NSApplicationActivationPolicyRegular);
SAME(kSigningInformation, kSecCSSigningInformation);
static_assert(NSBitmapImageFileTypePNG == 4);

SAME(kEventLeftMouseDown, kCGEventLeftMouseDown);
SAME(kEventLeftMouseUp, kCGEventLeftMouseUp);
SAME(kEventRightMouseDown, kCGEventRightMouseDown);
SAME(kEventRightMouseUp, kCGEventRightMouseUp);
SAME(kEventRightMouseDragged, kCGEventRightMouseDragged);
SAME(kEventOtherMouseDown, kCGEventOtherMouseDown);
SAME(kEventOtherMouseUp, kCGEventOtherMouseUp);
SAME(kEventOtherMouseDragged, kCGEventOtherMouseDragged);
SAME(kEventMouseMoved, kCGEventMouseMoved);
SAME(kEventLeftMouseDragged, kCGEventLeftMouseDragged);
SAME(kEventKeyDown, kCGEventKeyDown);
SAME(kEventKeyUp, kCGEventKeyUp);
SAME(kEventScrollWheel, kCGEventScrollWheel);
SAME(kMouseButtonLeft, kCGMouseButtonLeft);
SAME(kMouseButtonRight, kCGMouseButtonRight);
SAME(kMouseButtonCenter, kCGMouseButtonCenter);
SAME(kMouseEventClickState, kCGMouseEventClickState);
SAME(kScrollEventUnitLine, kCGScrollEventUnitLine);
SAME(kEventSourceStateHidSystemState, kCGEventSourceStateHIDSystemState);
SAME(kEventFlagMaskAlphaShift, kCGEventFlagMaskAlphaShift);
SAME(kEventFlagMaskShift, kCGEventFlagMaskShift);
SAME(kEventFlagMaskControl, kCGEventFlagMaskControl);
SAME(kEventFlagMaskAlternate, kCGEventFlagMaskAlternate);
SAME(kEventFlagMaskCommand, kCGEventFlagMaskCommand);

SAME(kHidEventTap, kCGHIDEventTap);
SAME(kSessionEventTap, kCGSessionEventTap);
SAME(kHeadInsertEventTap, kCGHeadInsertEventTap);
SAME(kEventTapOptionListenOnly, kCGEventTapOptionListenOnly);
SAME(kEventTapDisabledByTimeout, kCGEventTapDisabledByTimeout);
SAME(kEventTapDisabledByUserInput, kCGEventTapDisabledByUserInput);
SAME(kKeyboardEventKeycode, kCGKeyboardEventKeycode);
SAME(kScrollWheelEventDeltaAxis1, kCGScrollWheelEventDeltaAxis1);

// What a recording listens to.
static_assert((1u << kCGEventLeftMouseDown | 1u << kCGEventLeftMouseUp |
               1u << kCGEventLeftMouseDragged | 1u << kCGEventKeyDown |
               1u << kCGEventScrollWheel) == 0x400446);
