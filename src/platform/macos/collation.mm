#import "platform/macos/collation.h"

#import <Foundation/Foundation.h>

#import "platform/macos/ns_strings.h"

namespace quil::macos {

int MacCollation::localizedCaseInsensitiveCompare(std::string_view a, std::string_view b) {
    return static_cast<int>([nsString(a) localizedCaseInsensitiveCompare:nsString(b)]);
}

}  // namespace quil::macos
