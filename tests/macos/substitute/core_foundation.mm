// Core Foundation's objects. They are those of Foundation and of ours: all are bridged.
#import <CoreFoundation/CoreFoundation.h>

#include <sstream>

#include "collections.h"

using namespace quil;
using namespace quil::substitute;

extern "C" {
id objc_retain(id object);
void objc_release(id object);
}

EMPTY_CLASS(Null, NSObject)
EMPTY_CLASS(UnknownObject, NSObject)
@implementation UIElement
@end
@implementation GeometryValue
@end

namespace {

NSNumber* boolean(bool value) {
    static NSNumber* const values[] = {
        singleton([NSNumber of:NumberKind::boolean integer:0 real:0]),
        singleton([NSNumber of:NumberKind::boolean integer:1 real:0])};
    return values[value];
}

struct Type {
    CFTypeID id;
    Class objects;
    const char* name;
};
const Type kTypes[] = {
    {7, [NSString class], "CFString"},          {19, [NSArray class], "CFArray"},
    {18, [NSDictionary class], "CFDictionary"}, {16, [Null class], "CFNull"},
    {300, [UIElement class], "AXUIElement"},    {301, [GeometryValue class], "AXValue"},
};
constexpr CFTypeID kUnknown = 1, kBoolean = 21, kNumber = 22;

NSNumber* numberOf(CFTypeRef object, const char* call = __builtin_FUNCTION()) {
    return own<NSNumber>(object, call);
}

id geometry(AXValueType type, double first, double second) {
    GeometryValue* value = [[GeometryValue alloc] init];
    value->type = type;
    value->numbers[0] = first;
    value->numbers[1] = second;
    return value;
}

id specialObject(const std::string& name) {
    std::string kind, number;
    std::istringstream(name) >> kind >> number;
    if (kind == "null") return [[Null alloc] init];
    if (kind == "range") return geometry(static_cast<AXValueType>(4), 0, 0);  // kAXValueTypeCFRange
    if (kind == "float") return [NSNumber of:NumberKind::single integer:0 real:std::stof(number)];
    if (kind != "unsigned") violation("a scenario asks for an unknown object: " + name);
    const auto large = static_cast<long long>(std::stoull(number));
    return [NSNumber of:NumberKind::large integer:large real:0];
}

id uiElement(const ElementRef& element, int process) {
    UIElement* result = [[UIElement alloc] init];
    result->element = element;
    result->process = process;
    const auto* simulated = dynamic_cast<const quil::simulated::Element*>(element.get());
    std::optional<Value> own;
    if (simulated && simulated->read("Process", own) == kAxSuccess && own) {
        result->process = static_cast<int>(own->integer().value_or(process));
    }
    return result;
}

}  // namespace

namespace quil::substitute {

NSDictionary* dictionary(const Value::Dictionary& members, int process) {
    NSMutableDictionary* result = [[NSMutableDictionary alloc] init];
    for (const auto& [name, member] : members) result[string(name)] = object(member, process);
    return result;
}

id object(const std::optional<Value>& value, int process) {
    if (!value) return nil;
    if (value->string()) return string(*value->string());
    if (const auto flag = value->boolean()) return boolean(*flag);
    if (value->isInteger()) return [NSNumber numberWithLong:*value->integer()];
    if (const auto number = value->number()) return [NSNumber numberWithDouble:*number];
    if (const auto point = value->point()) return geometry(kAXValueTypeCGPoint, point->x, point->y);
    if (const auto size = value->size()) {
        return geometry(kAXValueTypeCGSize, size->width, size->height);
    }
    if (const ElementRef element = value->element()) return uiElement(element, process);
    if (const Value::Dictionary* members = value->dictionary()) {
        const std::string* special = findString(*members, "substitute");
        return special ? specialObject(*special) : dictionary(*members, process);
    }
    if (const Value::List* list = value->list()) {
        return array(*list, [&](const Value& entry) { return object(entry, process); });
    }
    return [[UnknownObject alloc] init];
}

Value value(id object) {
    if ([object isKindOfClass:[NSString class]]) return utf8(object);
    NSNumber* number = numberOf((__bridge CFTypeRef)object);
    if (number->kind == NumberKind::boolean) return number->integer != 0;
    if (number.isReal) return number->real;
    return static_cast<std::int64_t>(number->integer);
}

}  // namespace quil::substitute

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFBooleanRef kCFBooleanTrue = (__bridge CFBooleanRef)boolean(true);
const CFBooleanRef kCFBooleanFalse = (__bridge CFBooleanRef)boolean(false);

CFTypeRef CFRetain(CFTypeRef object) {
    own<NSObject>(object);
    objc_retain((__bridge id)object);
    return object;
}
void CFRelease(CFTypeRef object) {
    if (!object) violation("CFRelease: null");
    objc_release((__bridge id)object);
}
CFTypeID CFGetTypeID(CFTypeRef reference) {
    NSObject* object = own<NSObject>(reference);
    for (const Type& type : kTypes) {
        if ([object isKindOfClass:type.objects]) return type.id;
    }
    if (![object isKindOfClass:[NSNumber class]]) return kUnknown;
    return ((NSNumber*)object)->kind == NumberKind::boolean ? kBoolean : kNumber;
}
CFStringRef CFCopyTypeIDDescription(CFTypeID id) {
    for (const Type& type : kTypes) {
        if (type.id == id) return handedOver<CFStringRef>(string(type.name));
    }
    return handedOver<CFStringRef>(string("UnknownObject"));
}
#define TYPE_ID(name, value)     \
    CFTypeID name##GetTypeID() { \
        return value;            \
    }
TYPE_ID(CFString, kTypes[0].id)
TYPE_ID(CFArray, kTypes[1].id)
TYPE_ID(CFDictionary, kTypes[2].id)
TYPE_ID(CFNull, kTypes[3].id)
TYPE_ID(AXUIElement, kTypes[4].id)
TYPE_ID(AXValue, kTypes[5].id)
TYPE_ID(CFBoolean, kBoolean)
TYPE_ID(CFNumber, kNumber)

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
    return numberOf(boolean)->integer != 0;
}
Boolean CFNumberIsFloatType(CFNumberRef number) {
    return numberOf(number).isReal != 0;
}
CFIndex CFNumberGetByteSize(CFNumberRef reference) {
    const NumberKind kind = numberOf(reference)->kind;
    return kind == NumberKind::single || kind == NumberKind::narrow ? 4 : 8;
}
/// Whether the value came over without loss.
Boolean CFNumberGetValue(CFNumberRef reference, CFNumberType type, void* value) {
    NSNumber* number = numberOf(reference);
    if (type != kCFNumberSInt64Type) violation("CFNumberGetValue: a type with no substitute");
    const long long integer = number.isReal ? (long long)number->real : number->integer;
    *static_cast<long long*>(value) = integer;
    return !number.isReal && !(number->kind == NumberKind::large && integer < 0);
}

CFIndex CFArrayGetCount(CFArrayRef array) {
    return static_cast<CFIndex>(own<NSArray>(array)->items.size());
}
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    const auto& items = own<NSArray>(array)->items;
    const auto place = static_cast<std::size_t>(index);
    if (place >= items.size()) violation("CFArrayGetValueAtIndex: beyond the end");
    return (__bridge const void*)items[place];
}
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    NSDictionary* members = own<NSDictionary>(dictionary);
    return (__bridge const void*)members[own<NSString>(key)];
}

}  // extern "C"
