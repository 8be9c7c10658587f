#import "platform/macos/values.h"

#import <Foundation/Foundation.h>

#import "platform/macos/ns_strings.h"

namespace quil::macos {
namespace {

class MacElement : public AccessibilityElement {
  public:
    explicit MacElement(CfRef<AXUIElementRef> object) : element(std::move(object)) {}
    const CfRef<AXUIElementRef> element;
};

Value opaqueValue(CFTypeRef object) {
    const auto name = CfRef<CFStringRef>::adopt(CFCopyTypeIDDescription(CFGetTypeID(object)));
    return OpaqueValue{name ? utf8((__bridge NSString*)name.get()) : std::string()};
}

Value numberValue(CFNumberRef number) {
    if (!CFNumberIsFloatType(number)) {
        std::int64_t integer = 0;
        if (CFNumberGetValue(number, kCFNumberSInt64Type, &integer)) return integer;
    }
    NSNumber* object = (__bridge NSNumber*)number;
    if (!CFNumberIsFloatType(number)) return utf8(object.stringValue);
    // A single-precision number means the few digits it is written with: 0.7, not
    // 0.699999988079071.
    const bool single = CFNumberGetByteSize(number) == sizeof(float);
    return single ? object.stringValue.doubleValue : object.doubleValue;
}

Value listValue(CFArrayRef array) {
    const CFIndex count = CFArrayGetCount(array);
    Value::List list;
    list.reserve(static_cast<std::size_t>(count));
    for (CFIndex index = 0; index < count; ++index) {
        auto entry = valueOf(CFArrayGetValueAtIndex(array, index));
        list.push_back(entry ? std::move(*entry) : Value(OpaqueValue{}));
    }
    return list;
}

Value dictionaryValue(CFDictionaryRef object) {
    NSDictionary* members = (__bridge NSDictionary*)object;
    Value::Dictionary dictionary;
    for (id key in members) {
        if (![key isKindOfClass:[NSString class]]) return opaqueValue(object);
        if (auto member = valueOf((__bridge CFTypeRef)members[key])) {
            dictionary.emplace(utf8(key), std::move(*member));
        }
    }
    return dictionary;
}

/// A point, a size, or something that stays opaque (a range, a rectangle, an error).
Value geometryValue(AXValueRef value) {
    CGPoint point;
    if (AXValueGetValue(value, kAXValueTypeCGPoint, &point)) return Point{point.x, point.y};
    CGSize size;
    if (AXValueGetValue(value, kAXValueTypeCGSize, &size)) return Size{size.width, size.height};
    return opaqueValue(value);
}

}  // namespace

ElementRef elementOf(CfRef<AXUIElementRef> element) {
    return std::make_shared<MacElement>(std::move(element));
}

AXUIElementRef handleOf(const ElementRef& element) {
    return static_cast<const MacElement&>(*element).element.get();
}

std::optional<Value> valueOf(CFTypeRef object) {
    if (!object) return {};
    const CFTypeID type = CFGetTypeID(object);
    if (type == CFStringGetTypeID()) return Value(utf8((__bridge NSString*)object));
    if (type == CFBooleanGetTypeID()) {
        return Value(static_cast<bool>(CFBooleanGetValue(static_cast<CFBooleanRef>(object))));
    }
    if (type == CFNumberGetTypeID()) return numberValue(static_cast<CFNumberRef>(object));
    if (type == CFArrayGetTypeID()) return listValue(static_cast<CFArrayRef>(object));
    if (type == CFDictionaryGetTypeID()) {
        return dictionaryValue(static_cast<CFDictionaryRef>(object));
    }
    if (type == AXUIElementGetTypeID()) {
        const auto element = static_cast<AXUIElementRef>(object);
        return Value(elementOf(CfRef<AXUIElementRef>::share(element)));
    }
    if (type == AXValueGetTypeID()) return geometryValue(static_cast<AXValueRef>(object));
    return opaqueValue(object);
}

CfRef<CFTypeRef> objectOf(const Value& value) {
    if (const auto boolean = value.boolean()) {
        return CfRef<CFTypeRef>::share(*boolean ? kCFBooleanTrue : kCFBooleanFalse);
    }
    if (const std::string* string = value.string()) {
        return CfRef<CFTypeRef>::adopt((__bridge_retained CFTypeRef)nsString(*string));
    }
    if (value.isInteger()) {
        return CfRef<CFTypeRef>::adopt((__bridge_retained CFTypeRef) @(*value.integer()));
    }
    if (const auto number = value.number()) {
        return CfRef<CFTypeRef>::adopt((__bridge_retained CFTypeRef) @(*number));
    }
    return {};
}

}  // namespace quil::macos
