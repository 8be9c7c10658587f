#import "platform/macos/pasteboard.h"

#import <AppKit/AppKit.h>

#import "platform/macos/delivery.h"
#import "platform/macos/ns_strings.h"

namespace quil::macos {
namespace {

/// How long the owner of the pasteboard may take to deliver what it has only promised so far.
constexpr std::chrono::seconds kPatience{2};

}  // namespace

std::optional<std::string> MacPasteboard::stringForType(std::string_view type) {
    // Read on another thread, since the call waits for the owner without a bound of its own.
    NSString* wanted = nsString(type);
    const auto delivery = std::make_shared<Delivery<NSString*>>();
    [NSThread detachNewThreadWithBlock:^{
      @autoreleasepool {
          delivery->deliver([[NSPasteboard generalPasteboard] stringForType:wanted]);
      }
    }];
    return optionalUtf8(delivery->await(kPatience));
}

void MacPasteboard::clearContents() {
    [[NSPasteboard generalPasteboard] clearContents];
}

bool MacPasteboard::setString(std::string_view text, std::string_view type) {
    return [[NSPasteboard generalPasteboard] setString:nsString(text) forType:nsString(type)];
}

}  // namespace quil::macos
