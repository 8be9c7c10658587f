#import "platform/macos/ax_calls.h"

#import <Foundation/Foundation.h>

#import "platform/macos/ns_strings.h"
#import "platform/macos/values.h"

namespace quil::macos {
namespace {

AxResult resultOf(AXError code, CFTypeRef value) {
    if (code != kAXErrorSuccess) return {.code = code};
    return {.value = valueOf(value)};
}

/// Instead of a value that it could not read, the combined call puts the error, or a null.
AxResult resultAt(CFArrayRef values, CFIndex index) {
    CFTypeRef entry = CFArrayGetValueAtIndex(values, index);
    if (!entry || CFGetTypeID(entry) == CFNullGetTypeID()) return {.code = kAxNoValue};
    if (CFGetTypeID(entry) == AXValueGetTypeID()) {
        AXError error = kAXErrorFailure;
        if (AXValueGetValue(static_cast<AXValueRef>(entry), kAXValueTypeAXError, &error)) {
            return {.code = error};
        }
    }
    return {.value = valueOf(entry)};
}

}  // namespace

AxResult AxCalls::copyAttributeValue(const ElementRef& element, std::string_view attribute) {
    AXUIElementRef handle = handleOf(element);
    if (!handle) return {.code = kAxInvalidUIElement};
    NSString* name = nsString(attribute);
    CFTypeRef copied = nullptr;
    const AXError code = AXUIElementCopyAttributeValue(handle, (__bridge CFStringRef)name, &copied);
    const auto value = CfRef<CFTypeRef>::adopt(copied);
    return resultOf(code, value.get());
}

AxResult AxCalls::copyActionNames(const ElementRef& element) {
    AXUIElementRef handle = handleOf(element);
    if (!handle) return {.code = kAxInvalidUIElement};
    CFArrayRef copied = nullptr;
    const AXError code = AXUIElementCopyActionNames(handle, &copied);
    const auto names = CfRef<CFArrayRef>::adopt(copied);
    return resultOf(code, names.get());
}

std::int32_t AxCalls::copyMultipleAttributeValues(const ElementRef& element,
                                                  const std::vector<std::string>& attributes,
                                                  std::vector<AxResult>& results) {
    AXUIElementRef handle = handleOf(element);
    if (!handle) return kAxInvalidUIElement;
    NSMutableArray* names = [NSMutableArray array];
    for (const std::string& attribute : attributes) [names addObject:nsString(attribute)];
    CFArrayRef copied = nullptr;
    const AXError code =
        AXUIElementCopyMultipleAttributeValues(handle, (__bridge CFArrayRef)names, {}, &copied);
    const auto values = CfRef<CFArrayRef>::adopt(copied);
    if (code != kAXErrorSuccess || !values) return code;
    const CFIndex count = CFArrayGetCount(values.get());
    for (CFIndex index = 0; index < count; ++index) {
        results.push_back(resultAt(values.get(), index));
    }
    return code;
}

std::int32_t AxCalls::processOf(const ElementRef& element) {
    pid_t pid = 0;
    AXUIElementRef handle = handleOf(element);
    if (handle) AXUIElementGetPid(handle, &pid);
    return pid;
}

double AxCalls::uptime() {
    return [NSProcessInfo processInfo].systemUptime;
}

}  // namespace quil::macos
