#import "platform/macos/tapped_event.h"

#import <AppKit/AppKit.h>

#import "platform/macos/ns_strings.h"

namespace quil::macos {

Point MacTappedEvent::location() const {
    const CGPoint point = CGEventGetLocation(event_);
    return {point.x, point.y};
}

std::uint64_t MacTappedEvent::timestamp() const {
    return CGEventGetTimestamp(event_);
}

std::uint64_t MacTappedEvent::flags() const {
    return CGEventGetFlags(event_);
}

std::int64_t MacTappedEvent::integerValueField(std::uint32_t field) const {
    return CGEventGetIntegerValueField(event_, static_cast<CGEventField>(field));
}

std::optional<std::string> MacTappedEvent::characters() const {
    NSEvent* event = [NSEvent eventWithCGEvent:event_];
    // Asking another kind of event for its characters raises an exception.
    if (event.type != NSEventTypeKeyDown && event.type != NSEventTypeKeyUp) return {};
    return optionalUtf8(event.characters);
}

}  // namespace quil::macos
