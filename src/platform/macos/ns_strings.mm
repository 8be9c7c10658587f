#import "platform/macos/ns_strings.h"

#include "text/characters.h"

namespace quil::macos {

// UTF-16 both ways: what NSString itself holds. Its UTF-8 accessors refuse a string with a lone
// surrogate and end it at a NUL.

std::string utf8(NSString* text) {
    static_assert(sizeof(unichar) == sizeof(char16_t));
    const NSUInteger length = text.length;
    std::u16string units(length, u'\0');
    [text getCharacters:reinterpret_cast<unichar*>(units.data()) range:NSMakeRange(0, length)];
    return toUtf8(units);
}

std::optional<std::string> optionalUtf8(NSString* text) {
    if (!text) return {};
    return utf8(text);
}

NSString* nsString(std::string_view text) {
    const std::u16string units = toUtf16(text);
    return [[NSString alloc] initWithCharacters:reinterpret_cast<const unichar*>(units.data())
                                         length:units.size()];
}

}  // namespace quil::macos
