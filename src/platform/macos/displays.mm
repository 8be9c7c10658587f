#import "platform/macos/displays.h"

#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>

#import "platform/macos/main_thread.h"
#import "platform/macos/ns_strings.h"

namespace quil::macos {
namespace {

std::vector<Screen> screensNow() {
    std::vector<Screen> screens;
    for (NSScreen* screen in [NSScreen screens]) {
        Screen entry{.screenNumber = {}, .localizedName = utf8(screen.localizedName)};
        id number = screen.deviceDescription[@"NSScreenNumber"];
        if ([number isKindOfClass:[NSNumber class]]) entry.screenNumber = [number unsignedIntValue];
        screens.push_back(std::move(entry));
    }
    return screens;
}

}  // namespace

std::int32_t MacDisplays::getActiveDisplayList(std::uint32_t capacity, std::uint32_t* ids,
                                               std::uint32_t* count) {
    return CGGetActiveDisplayList(capacity, ids, count);
}

Rect MacDisplays::displayBounds(std::uint32_t display) {
    const CGRect bounds = CGDisplayBounds(display);
    return {bounds.origin.x, bounds.origin.y, bounds.size.width, bounds.size.height};
}

std::uint32_t MacDisplays::mainDisplayId() {
    return CGMainDisplayID();
}

std::vector<Screen> MacDisplays::screens() {
    return askOnMainThread<std::vector<Screen>>(screensNow);
}

}  // namespace quil::macos
