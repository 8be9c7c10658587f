// Core Graphics: displays, the window list, permissions, events and taps. And Carbon's one call.
#import <ApplicationServices/ApplicationServices.h>
#import <Carbon/Carbon.h>

#include "core_graphics.h"
#include "run_loops.h"

using namespace quil;
using namespace quil::substitute;

@interface EventSourceObject : NSObject {
  @public
    std::unique_ptr<EventSource> source;
}
@end
@implementation EventSourceObject
@end
@implementation EventObject
@end

namespace {

EventObject* eventOf(CGEventRef event, const char* call = __builtin_FUNCTION()) {
    return own<EventObject>(event, call);
}

EventSource* sourceOf(CGEventSourceRef source, const char* call = __builtin_FUNCTION()) {
    return source ? own<EventSourceObject>(source, call)->source.get() : nullptr;
}

CGEventRef handedOver(PostableEventRef event) {
    if (!event) return nullptr;
    EventObject* object = [[EventObject alloc] init];
    object->posted = std::move(event);
    return substitute::handedOver<CGEventRef>(object);
}

PostableEvent& postable(CGEventRef event, const char* call = __builtin_FUNCTION()) {
    EventObject* object = eventOf(event, call);
    if (!object->posted) violation(std::string(call) + ": an event of a tap");
    return *object->posted;
}

/// A copy of what the tap has got: an event lives as long as somebody holds it.
EventObject* tapped(std::uint32_t type, const TappedEvent& event) {
    EventObject* object = [[EventObject alloc] init];
    object->type = type;
    object->at = event.location();
    object->timestamp = event.timestamp();
    object->flags = event.flags();
    object->keyCode = event.integerValueField(kCGKeyboardEventKeycode);
    object->lines = event.integerValueField(kCGScrollWheelEventDeltaAxis1);
    object->characters = event.characters();
    return object;
}

}  // namespace

extern "C" {

CGError CGGetActiveDisplayList(std::uint32_t capacity, CGDirectDisplayID* displays,
                               std::uint32_t* count) {
    return static_cast<CGError>(
        services->displays().getActiveDisplayList(capacity, displays, count));
}
CGRect CGDisplayBounds(CGDirectDisplayID display) {
    const Rect bounds = services->displays().displayBounds(display);
    return {{bounds.x, bounds.y}, {bounds.width, bounds.height}};
}
ANSWERS(CGDirectDisplayID, CGMainDisplayID, displays().mainDisplayId)

CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow) {
    return substitute::handedOver<CFArrayRef>(
        object(services->windowList().copyWindowInfo(option, relativeToWindow)));
}

ANSWERS(bool, CGPreflightScreenCaptureAccess, permissions().preflightScreenCaptureAccess)
ANSWERS(bool, CGPreflightListenEventAccess, permissions().preflightListenEventAccess)
ANSWERS(bool, CGRequestListenEventAccess, permissions().requestListenEventAccess)
ANSWERS(Boolean, IsSecureEventInputEnabled, eventTaps().isSecureEventInputEnabled)

CGEventSourceRef CGEventSourceCreate(CGEventSourceStateID state) {
    auto source = services->eventPosting().createSource(state);
    if (!source) return nullptr;
    EventSourceObject* object = [[EventSourceObject alloc] init];
    object->source = std::move(source);
    return substitute::handedOver<CGEventSourceRef>(object);
}
CGEventRef CGEventCreateMouseEvent(CGEventSourceRef source, CGEventType type, CGPoint location,
                                   CGMouseButton button) {
    return handedOver(services->eventPosting().createMouseEvent(sourceOf(source), type,
                                                                {location.x, location.y}, button));
}
CGEventRef CGEventCreateScrollWheelEvent2(CGEventSourceRef source, CGScrollEventUnit units,
                                          std::uint32_t wheelCount, std::int32_t wheel1,
                                          std::int32_t wheel2, std::int32_t wheel3) {
    return handedOver(services->eventPosting().createScrollWheelEvent(
        sourceOf(source), units, wheelCount, wheel1, wheel2, wheel3));
}
CGEventRef CGEventCreateKeyboardEvent(CGEventSourceRef source, CGKeyCode keyCode, bool keyDown) {
    return handedOver(
        services->eventPosting().createKeyboardEvent(sourceOf(source), keyCode, keyDown));
}
void CGEventKeyboardSetUnicodeString(CGEventRef event, UniCharCount length, const UniChar* text) {
    // A keyboard event carries 20 units; what is beyond is lost.
    if (length > 20) violation("CGEventKeyboardSetUnicodeString: more than 20 units");
    services->eventPosting().keyboardSetUnicodeString(
        postable(event), {reinterpret_cast<const char16_t*>(text), length});
}
void CGEventPost(CGEventTapLocation tap, CGEventRef event) {
    services->eventPosting().post(tap, postable(event));
}

CGPoint CGEventGetLocation(CGEventRef event) {
    const Point at = eventOf(event)->at;
    return {at.x, at.y};
}
void CGEventSetLocation(CGEventRef event, CGPoint location) {
    services->eventPosting().setLocation(postable(event), {location.x, location.y});
}
CGEventTimestamp CGEventGetTimestamp(CGEventRef event) {
    return eventOf(event)->timestamp;
}
CGEventFlags CGEventGetFlags(CGEventRef event) {
    return eventOf(event)->flags;
}
void CGEventSetFlags(CGEventRef event, CGEventFlags flags) {
    services->eventPosting().setFlags(postable(event), flags);
}
void CGEventSetIntegerValueField(CGEventRef event, CGEventField field, std::int64_t value) {
    services->eventPosting().setIntegerValueField(postable(event), field, value);
}
std::int64_t CGEventGetIntegerValueField(CGEventRef reference, CGEventField field) {
    const EventObject* event = eventOf(reference);
    if (field == kCGKeyboardEventKeycode) return event->keyCode;
    return field == kCGScrollWheelEventDeltaAxis1 ? event->lines : 0;
}

CFMachPortRef CGEventTapCreate(CGEventTapLocation location, CGEventTapPlacement placement,
                               CGEventTapOptions options, CGEventMask mask,
                               CGEventTapCallBack callback, void* userInfo) {
    if (location != kCGSessionEventTap)
        violation("CGEventTapCreate: a place for the root user only");
    if (options != kCGEventTapOptionListenOnly) violation("CGEventTapCreate: holds up the user");
    if (!callback || !mask) violation("CGEventTapCreate: listens to nothing");
    const auto tap = services->eventTaps().createTap(
        location, placement, options, mask,
        [callback, userInfo](std::uint32_t type, const TappedEvent& event) {
            @autoreleasepool {
                callback(nullptr, static_cast<CGEventType>(type),
                         (CGEventRef)(__bridge void*)tapped(type, event), userInfo);
            }
        });
    if (!tap) return nullptr;
    MachPort* port = [[MachPort alloc] init];
    port->tap = tap;
    return substitute::handedOver<CFMachPortRef>(port);
}
void CGEventTapEnable(CFMachPortRef port, bool enable) {
    services->eventTaps().enableTap(own<MachPort>(port)->tap, enable);
}

}  // extern "C"
