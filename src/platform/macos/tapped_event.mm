#import "platform/macos/tapped_event.h"

#import <AppKit/AppKit.h>

#import "platform/macos/cf_ref.h"
#import "platform/macos/main_thread.h"
#import "platform/macos/ns_strings.h"

namespace quil::macos {
namespace {

std::optional<std::string> charactersOf(CGEventRef keyEvent) {
    NSEvent* event = [NSEvent eventWithCGEvent:keyEvent];
    // Asking another kind of event for its characters raises an exception.
    if (event.type != NSEventTypeKeyDown && event.type != NSEventTypeKeyUp) return {};
    return optionalUtf8(event.characters);
}

}  // namespace

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
    // On the main thread: the text input services, which know the keyboard's layout, may end a
    // process that calls them on another one.
    const auto event = CfRef<CGEventRef>::share(event_);
    return askOnMainThread<std::optional<std::string>>(
        [event] { return charactersOf(event.get()); });
}

}  // namespace quil::macos
