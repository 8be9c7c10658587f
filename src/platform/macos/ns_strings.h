#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <string_view>

namespace quil::macos {

/// The text in UTF-8; surrogates without their partner become U+FFFD.
std::string utf8(NSString* text);

/// The same, or nothing for nil.
std::optional<std::string> optionalUtf8(NSString* text);

/// The string of that UTF-8 text; never nil. Bytes that are not UTF-8 become U+FFFD.
NSString* nsString(std::string_view text);

}  // namespace quil::macos
