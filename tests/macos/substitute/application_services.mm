// The accessibility client interface.
#import <ApplicationServices/ApplicationServices.h>

#include <atomic>
#include <cstring>

#include "collections.h"

using namespace quil;
using namespace quil::substitute;

namespace {

/// Calls to other applications, one at a time.
class Call {
  public:
    Call() {
        if (underWay_.exchange(true)) violation("accessibility calls from two threads at a time");
        block("accessibility");
        if (mac.roundTrip) services->clock().sleepMicroseconds(mac.roundTrip);
    }
    ~Call() { underWay_ = false; }

  private:
    static std::atomic<bool> underWay_;
};
std::atomic<bool> Call::underWay_ = false;

UIElement* elementOf(AXUIElementRef element, const char* call = __builtin_FUNCTION()) {
    return own<UIElement>(element, call);
}

/// What one attribute gives: its value, or the error.
AXError readAttribute(UIElement* element, CFStringRef attribute, id __strong& result) {
    std::optional<Value> value;
    const auto code = services->accessibility().copyAttributeValue(
        element->element, utf8((__bridge NSString*)attribute), value);
    if (code == kAxSuccess) result = object(value, element->process);
    return static_cast<AXError>(code);
}

/// What the combined read puts in the place of an attribute that it could not read.
id placeholder(AXError error) {
    GeometryValue* value = [[GeometryValue alloc] init];
    value->type = kAXValueTypeAXError;
    value->error = error;
    return value;
}

/// Windows come to the front among those of their application, whether or not the scenario gives
/// them the action.
AXError raise(UIElement* element) {
    id title = nil;
    readAttribute(element, (__bridge CFStringRef) @"AXTitle", title);
    const auto windows = services->windowList().copyWindowInfo(0, 0);
    for (const Value& window : *windows->list()) {
        const Value* owner = findMember(*window.dictionary(), kWindowOwnerPid);
        const std::string* name = findString(*window.dictionary(), kWindowName);
        if (!owner || owner->integer() != element->process || !name || !title) continue;
        if (*name != utf8(title)) continue;
        services->windowList().activateWindow(
            *findMember(*window.dictionary(), kWindowNumber)->integer());
        return kAXErrorSuccess;
    }
    return kAXErrorActionUnsupported;
}

}  // namespace

extern "C" {

ANSWERS(Boolean, AXIsProcessTrusted, permissions().isProcessTrusted)

AXUIElementRef AXUIElementCreateApplication(pid_t pid) {
    UIElement* result = [[UIElement alloc] init];
    result->element = services->accessibility().createApplication(pid);
    result->process = pid;
    return handedOver<AXUIElementRef>(result);
}

AXError AXUIElementGetPid(AXUIElementRef element, pid_t* pid) {
    *pid = elementOf(element)->process;
    return kAXErrorSuccess;
}

AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                      CFTypeRef* value) {
    const Call call;
    id result = nil;
    const AXError error = readAttribute(elementOf(element), attribute, result);
    if (error == kAXErrorSuccess) *value = handedOver<CFTypeRef>(result);
    return error;
}

AXError AXUIElementCopyMultipleAttributeValues(AXUIElementRef reference, CFArrayRef attributes,
                                               AXCopyMultipleAttributeOptions options,
                                               CFArrayRef* values) {
    const Call call;
    UIElement* element = elementOf(reference);
    if (options != 0) violation("AXUIElementCopyMultipleAttributeValues: stops at the first error");
    NSMutableArray* results = [[NSMutableArray alloc] init];
    for (id name : own<NSArray>(attributes)->items) {
        id result = nil;
        const AXError error = readAttribute(element, (__bridge CFStringRef)name, result);
        // What concerns the whole element is the answer to the whole call.
        if (error == kAXErrorInvalidUIElement || error == kAXErrorCannotComplete ||
            error == kAXErrorAPIDisabled || error == kAXErrorNotImplemented) {
            return error;
        }
        if (!result) result = placeholder(error == kAXErrorSuccess ? kAXErrorNoValue : error);
        [results addObject:result];
    }
    *values = handedOver<CFArrayRef>(results);
    return kAXErrorSuccess;
}

AXError AXUIElementCopyActionNames(AXUIElementRef element, CFArrayRef* names) {
    const Call call;
    std::optional<Value> value;
    const auto code = services->accessibility().copyActionNames(elementOf(element)->element, value);
    if (code == kAxSuccess) *names = handedOver<CFArrayRef>(object(value));
    return static_cast<AXError>(code);
}

AXError AXUIElementPerformAction(AXUIElementRef element, CFStringRef action) {
    const Call call;
    if (utf8((__bridge NSString*)action) == "AXRaise") {
        return raise(elementOf(element));
    }
    return static_cast<AXError>(services->accessibility().performAction(
        elementOf(element)->element, utf8((__bridge NSString*)action)));
}

AXError AXUIElementSetAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                     CFTypeRef newValue) {
    const Call call;
    return static_cast<AXError>(services->accessibility().setAttributeValue(
        elementOf(element)->element, utf8((__bridge NSString*)attribute),
        value((__bridge id)newValue)));
}

/// Writes as many bytes as the type has, and only for the value's own type.
Boolean AXValueGetValue(AXValueRef reference, AXValueType type, void* result) {
    const GeometryValue* value = own<GeometryValue>(reference);
    if (!result) violation("AXValueGetValue: no place to write");
    if (value->type != type) return false;
    if (type == kAXValueTypeAXError) {
        std::memcpy(result, &value->error, sizeof value->error);
    } else {
        std::memcpy(result, value->numbers, sizeof value->numbers);
    }
    return true;
}

}  // extern "C"
