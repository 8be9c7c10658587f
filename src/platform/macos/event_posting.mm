#import "platform/macos/event_posting.h"

#import <ApplicationServices/ApplicationServices.h>

#import "platform/macos/cf_ref.h"

namespace quil::macos {
namespace {

struct MacEventSource : EventSource {
    explicit MacEventSource(CfRef<CGEventSourceRef> object) : source(std::move(object)) {}
    const CfRef<CGEventSourceRef> source;
};

struct MacEvent : PostableEvent {
    explicit MacEvent(CfRef<CGEventRef> object) : event(std::move(object)) {}
    const CfRef<CGEventRef> event;
};

CGEventSourceRef sourceOf(EventSource* source) {
    return source ? static_cast<MacEventSource*>(source)->source.get() : nullptr;
}

CGEventRef eventOf(const PostableEvent& event) {
    return static_cast<const MacEvent&>(event).event.get();
}

/// An event as it was created: null stays null.
PostableEventRef owned(CGEventRef event) {
    if (!event) return nullptr;
    return std::make_unique<MacEvent>(CfRef<CGEventRef>::adopt(event));
}

}  // namespace

std::unique_ptr<EventSource> MacEventPosting::createSource(std::int32_t state) {
    auto source = CfRef<CGEventSourceRef>::adopt(
        CGEventSourceCreate(static_cast<CGEventSourceStateID>(state)));
    if (!source) return nullptr;
    return std::make_unique<MacEventSource>(std::move(source));
}

PostableEventRef MacEventPosting::createMouseEvent(EventSource* source, std::uint32_t type,
                                                   Point point, std::uint32_t button) {
    return owned(CGEventCreateMouseEvent(sourceOf(source), static_cast<CGEventType>(type),
                                         CGPointMake(point.x, point.y),
                                         static_cast<CGMouseButton>(button)));
}

PostableEventRef MacEventPosting::createScrollWheelEvent(EventSource* source, std::uint32_t units,
                                                         std::uint32_t wheelCount,
                                                         std::int32_t wheel1, std::int32_t wheel2,
                                                         std::int32_t wheel3) {
    return owned(CGEventCreateScrollWheelEvent2(sourceOf(source),
                                                static_cast<CGScrollEventUnit>(units), wheelCount,
                                                wheel1, wheel2, wheel3));
}

PostableEventRef MacEventPosting::createKeyboardEvent(EventSource* source, std::uint16_t keyCode,
                                                      bool keyDown) {
    return owned(CGEventCreateKeyboardEvent(sourceOf(source), keyCode, keyDown));
}

void MacEventPosting::setLocation(PostableEvent& event, Point point) {
    CGEventSetLocation(eventOf(event), CGPointMake(point.x, point.y));
}

void MacEventPosting::setFlags(PostableEvent& event, std::uint64_t flags) {
    CGEventSetFlags(eventOf(event), static_cast<CGEventFlags>(flags));
}

void MacEventPosting::setIntegerValueField(PostableEvent& event, std::uint32_t field,
                                           std::int64_t value) {
    CGEventSetIntegerValueField(eventOf(event), static_cast<CGEventField>(field), value);
}

void MacEventPosting::keyboardSetUnicodeString(PostableEvent& event, std::u16string_view text) {
    CGEventKeyboardSetUnicodeString(eventOf(event), text.size(),
                                    reinterpret_cast<const UniChar*>(text.data()));
}

void MacEventPosting::post(std::uint32_t tapLocation, const PostableEvent& event) {
    CGEventPost(static_cast<CGEventTapLocation>(tapLocation), eventOf(event));
}

}  // namespace quil::macos
