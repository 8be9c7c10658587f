// What the substitutes of the frameworks share. They stand over the desktop of a scenario
// (docs/simulated-desktop.md): each call of a framework is answered by the simulated operation that
// is named after it, and what the platform's documentation demands of the caller is checked on the
// way.
#pragma once

#import <ApplicationServices/ApplicationServices.h>
#import <Foundation/Foundation.h>

#include <functional>
#include <map>
#include <string>

#include "platform/simulated/platform.h"
#include "runtime.h"

namespace quil::substitute {

/// How this Mac is, beyond its desktop: the member "mac" of a scenario.
struct Mac {
    /// The major version of the system.
    int version = 15;
    /// How many seconds of real time another process takes to answer, by the name of the call;
    /// negative: it never does.
    std::map<std::string, double, std::less<>> delays;
    /// What an accessibility call to another process takes on the desktop's clock, in microseconds.
    std::uint32_t roundTrip = 0;
    /// Completion handlers that fail get no error, only nothing.
    bool silentErrors = false;
};
extern Mac mac;

/// The desktop's services; set before anything is called.
extern SimulatedPlatform* services;

bool onMainThread();
/// A violation unless the calling thread is the main one.
void mainThreadOnly(const char* call = __builtin_FUNCTION());
/// A violation unless an application object has been made.
void applicationObjectNeeded(const char* call = __builtin_FUNCTION());

/// Blocks the calling thread as long as the delay of that name says.
void block(std::string_view name);
/// Does the work on another thread, in a pool, after the delay of that name or a moment.
void answerLater(std::string_view name, std::function<void()> work);
/// Runs the work on a new thread in an autorelease pool; the process waits for it before it counts
/// what has been left behind.
void startThread(std::size_t stackSize, std::function<void()> work);

/// Says that the object lives as long as the process does: it is not counted.
template <typename T>
T singleton(T object) {
    noteSingleton((__bridge void*)object);
    return object;
}

// Objects and values.

std::string utf8(NSString* text);
NSString* string(std::string_view text);
NSString* optionalString(const std::optional<std::string>& text);
NSDictionary* dictionary(const Value::Dictionary& members, int process = 0);
/// The object that stands for a simulated value, nil for none. Elements are of that process unless
/// they say otherwise by an integer attribute "Process". A dictionary with the member "substitute"
/// makes what a simulated value cannot be: of "float 0.7" and "unsigned 9223372036854775808" a
/// number, of "range" a text range (an AXValue that is neither a point nor a size), of "null" a
/// null.
id object(const std::optional<Value>& value, int process = 0);
/// The other way round; a violation when the object is none that the backend may give.
Value value(id object);

template <typename Range, typename Make>
NSArray* array(const Range& entries, const Make& make) {
    NSMutableArray* result = [[NSMutableArray alloc] init];
    for (const auto& entry : entries) [result addObject:make(entry)];
    return result;
}

/// The object behind an opaque reference, which must be one of that class.
template <typename T, typename Ref>
T* own(Ref reference, const char* call = __builtin_FUNCTION()) {
    T* object = (__bridge T*)(void*)reference;
    if (!object) violation(std::string(call) + ": null");
    if (![object isKindOfClass:[T class]]) violation(std::string(call) + ": wrong type of object");
    return object;
}
/// Defines a function without parameters that gives what one of the services gives.
#define ANSWERS(type, name, answer) \
    type name() {                   \
        return services->answer();  \
    }

/// A reference that the caller has to release.
template <typename Ref>
Ref handedOver(id object) {
    return (Ref)(__bridge_retained void*)object;
}

}  // namespace quil::substitute

/// What an element of another application is: AXUIElementRef.
@interface UIElement : NSObject {
  @public
    quil::ElementRef element;
    int process;
}
@end
/// AXValueRef.
@interface GeometryValue : NSObject {
  @public
    AXValueType type;
    double numbers[2];
    AXError error;
}
@end
