#import "platform/macos/pasteboard.h"

#import <AppKit/AppKit.h>

#import "platform/macos/ns_strings.h"

namespace quil::macos {
namespace {

/// How long the owner of the pasteboard may take to deliver what it has only promised so far.
constexpr std::chrono::seconds kOwnerTimeout{5};

}  // namespace

std::optional<std::string> MacPasteboard::stringForType(std::string_view type) {
    NSString* wanted = nsString(type);
    const auto text = thread_.call<std::optional<std::string>>(kOwnerTimeout, [wanted] {
        return optionalUtf8([[NSPasteboard generalPasteboard] stringForType:wanted]);
    });
    return text.value_or(std::nullopt);
}

void MacPasteboard::clearContents() {
    thread_.call<bool>(kOwnerTimeout, [] {
        [[NSPasteboard generalPasteboard] clearContents];
        return true;
    });
}

bool MacPasteboard::setString(std::string_view text, std::string_view type) {
    NSString* contents = nsString(text);
    NSString* kind = nsString(type);
    const auto accepted = thread_.call<bool>(kOwnerTimeout, [contents, kind] {
        return static_cast<bool>([[NSPasteboard generalPasteboard] setString:contents
                                                                     forType:kind]);
    });
    return accepted.value_or(false);
}

}  // namespace quil::macos
