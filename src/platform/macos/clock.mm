#import "platform/macos/clock.h"

#import <Foundation/Foundation.h>

#import "platform/macos/ns_strings.h"

namespace quil::macos {

double MacClock::timeIntervalSince1970() {
    return [NSDate date].timeIntervalSince1970;
}

double MacClock::systemUptime() {
    return [NSProcessInfo processInfo].systemUptime;
}

std::string MacClock::uuidString() {
    return utf8([NSUUID UUID].UUIDString);
}

}  // namespace quil::macos
