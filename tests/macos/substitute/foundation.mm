// Foundation.
#import <Foundation/Foundation.h>

#include <pthread.h>

#include <cstdio>
#include <cstring>

#include "collections.h"
#include "text/characters.h"

using namespace quil;
using namespace quil::substitute;

extern "C" {
id objc_alloc(Class type) __attribute__((ns_returns_retained));
Class object_getClass(id object);
Class class_getSuperclass(Class type);
}

@implementation NSObject
+ (instancetype)alloc {
    return objc_alloc(self);
}
+ (Class)class {
    return self;
}
- (instancetype)init {
    return self;
}
- (BOOL)isKindOfClass:(Class)type {
    for (Class own = object_getClass(self); own; own = class_getSuperclass(own)) {
        if (own == type) return true;
    }
    return false;
}
@end

EMPTY_CLASS(Block, NSObject)
EMPTY_CLASS(ConstantString, NSString)
__asm__(".globl _NSConcreteStackBlock, _NSConcreteGlobalBlock, __CFConstantStringClassReference\n"
        ".set _NSConcreteStackBlock, OBJC_CLASS_$_Block\n"
        ".set _NSConcreteGlobalBlock, OBJC_CLASS_$_Block\n"
        ".set __CFConstantStringClassReference, OBJC_CLASS_$_ConstantString\n");

namespace {

/// What the compiler writes for @"…".
struct ConstantText {
    Class isa;
    int flags;
    const char* text;
    long length;
};

std::u16string unitsOf(NSString* string) {
    if (object_getClass(string) != [ConstantString class]) return string->units;
    const auto* constant = (const ConstantText*)(__bridge void*)string;
    const auto length = static_cast<std::size_t>(constant->length);
    const bool wide = (constant->flags & 0xFF) == 0xD0;
    if (wide) return {reinterpret_cast<const char16_t*>(constant->text), length};
    return toUtf16({constant->text, length});
}

}  // namespace

@implementation NSString
/// Called for `@available`, see available.h.
+ (instancetype)stringWithUTF8String:(const char*)text {
    return text ? string(text) : nil;
}
- (instancetype)initWithCharacters:(const unichar*)characters length:(NSUInteger)length {
    units.assign(reinterpret_cast<const char16_t*>(characters), length);
    return self;
}
- (NSUInteger)length {
    return unitsOf(self).size();
}
- (double)doubleValue {
    return std::strtod(utf8(self).c_str(), nullptr);
}
- (void)getCharacters:(unichar*)buffer range:(NSRange)range {
    const std::u16string text = unitsOf(self);
    std::memcpy(buffer, text.data() + range.location, range.length * sizeof(unichar));
}
- (NSComparisonResult)localizedCaseInsensitiveCompare:(NSString*)other {
    if (!other) violation("localizedCaseInsensitiveCompare: nil");
    const int order =
        services->collation().localizedCaseInsensitiveCompare(utf8(self), utf8(other));
    return order < 0 ? NSOrderedAscending : order > 0 ? NSOrderedDescending : NSOrderedSame;
}
@end

namespace quil::substitute {

std::string utf8(NSString* text) {
    if (!text) violation("nil instead of a string");
    return toUtf8(unitsOf(text));
}
NSString* string(std::string_view text) {
    NSString* result = [[NSString alloc] init];
    result->units = toUtf16(text);
    return result;
}
NSString* optionalString(const std::optional<std::string>& text) {
    return text ? string(*text) : nil;
}

}  // namespace quil::substitute

@implementation NSNumber
+ (NSNumber*)of:(NumberKind)kind integer:(long long)integer real:(double)real {
    NSNumber* number = [[NSNumber alloc] init];
    number->kind = kind;
    number->integer = integer;
    number->real = real;
    return number;
}
+ (NSNumber*)numberWithInt:(int)value {
    return [self of:NumberKind::narrow integer:value real:0];
}
+ (NSNumber*)numberWithLong:(long)value {
    return [self of:NumberKind::integer integer:value real:0];
}
+ (NSNumber*)numberWithLongLong:(long long)value {
    return [self numberWithLong:value];
}
+ (NSNumber*)numberWithDouble:(double)value {
    return [self of:NumberKind::real integer:0 real:value];
}
- (BOOL)isReal {
    return kind == NumberKind::real || kind == NumberKind::single;
}
- (double)doubleValue {
    if (kind == NumberKind::large) return static_cast<double>(static_cast<unsigned long>(integer));
    return self.isReal ? real : static_cast<double>(integer);
}
- (unsigned int)unsignedIntValue {
    return static_cast<unsigned int>(self.isReal ? static_cast<long long>(real) : integer);
}
- (NSString*)stringValue {
    if (kind == NumberKind::large)
        return string(std::to_string(static_cast<unsigned long>(integer)));
    if (!self.isReal) return string(std::to_string(integer));
    char text[40];
    std::snprintf(text, sizeof text, kind == NumberKind::single ? "%0.7g" : "%0.16g", real);
    return string(text);
}
@end

struct NSFastEnumerationState {
    unsigned long state;
    id __unsafe_unretained* items;
    unsigned long* mutations;
    unsigned long extra[5];
};
namespace {

NSUInteger enumerate(NSFastEnumerationState* state, std::vector<id>& items) {
    static unsigned long never = 0;
    if (state->state != 0) return 0;
    state->state = 1;
    state->mutations = &never;
    state->items = reinterpret_cast<id __unsafe_unretained*>(items.data());
    return items.size();
}

}  // namespace

@implementation NSArray
+ (instancetype)array {
    return [[self alloc] init];
}
+ (instancetype)arrayWithObjects:(const id[])objects count:(NSUInteger)count {
    NSArray* array = [[self alloc] init];
    array->items.assign(objects, objects + count);
    return array;
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)capacity {
    return enumerate(state, items);
}
@end
@implementation NSMutableArray
- (void)addObject:(id)object {
    if (!object) violation("addObject: nil");
    items.push_back(object);
}
@end

@implementation NSDictionary
+ (instancetype)dictionary {
    return [[self alloc] init];
}
+ (instancetype)dictionaryWithObjects:(const id[])objects
                              forKeys:(const id<NSCopying>[])keys
                                count:(NSUInteger)count {
    NSDictionary* dictionary = [[self alloc] init];
    dictionary->keys.assign(keys, keys + count);
    dictionary->values.assign(objects, objects + count);
    return dictionary;
}
- (id)objectForKeyedSubscript:(id)key {
    if (![key isKindOfClass:[NSString class]]) return nil;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if ([keys[i] isKindOfClass:[NSString class]] && unitsOf(keys[i]) == unitsOf(key)) {
            return values[i];
        }
    }
    return nil;
}
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)capacity {
    return enumerate(state, keys);
}
@end
@implementation NSMutableDictionary
- (void)setObject:(id)object forKeyedSubscript:(id)key {
    if (!object || !key) violation("setObject:forKeyedSubscript: nil");
    keys.push_back(key);
    values.push_back(object);
}
@end
extern "C" id __NSDictionary0__;
id __NSDictionary0__ = singleton([[NSDictionary alloc] init]);

@implementation NSData
- (const void*)bytes {
    return content.empty() ? nullptr : content.data();
}
- (NSUInteger)length {
    return content.size();
}
@end
@implementation NSError
@end

@implementation NSURL
+ (NSURL*)fileURLWithPath:(NSString*)path {
    NSURL* url = [[self alloc] init];
    url->_path = path;
    return url;
}
@end

@implementation NSBundle
- (instancetype)initWithURL:(NSURL*)url {
    const auto bundle = services->bundles().openBundle(utf8(url.path));
    if (!bundle) return nil;
    _bundleIdentifier = optionalString(bundle->bundleIdentifier);
    _infoDictionary = dictionary(bundle->infoDictionary);
    return self;
}
@end

@implementation NSFileManager
+ (NSFileManager*)defaultManager {
    static NSFileManager* manager = singleton([[NSFileManager alloc] init]);
    return manager;
}
- (NSArray*)contentsOfDirectoryAtPath:(NSString*)path error:(NSError**)error {
    const auto entries = services->bundles().contentsOfDirectory(utf8(path));
    return entries ? array(*entries, [](const std::string& name) { return string(name); }) : nil;
}
@end

@implementation NSDate
+ (instancetype)date {
    NSDate* date = [[self alloc] init];
    date->_timeIntervalSince1970 = services->clock().timeIntervalSince1970();
    return date;
}
+ (NSDate*)distantFuture {
    return [[self alloc] init];
}
@end

@implementation NSProcessInfo
+ (NSProcessInfo*)processInfo {
    static NSProcessInfo* info = singleton([[NSProcessInfo alloc] init]);
    return info;
}
- (NSTimeInterval)systemUptime {
    return services->clock().systemUptime();
}
@end

@implementation NSUUID
+ (instancetype)UUID {
    return [[self alloc] init];
}
- (NSString*)UUIDString {
    return string(services->clock().uuidString());
}
@end

@implementation NSThread {
    void (^work_)(void);
}
@synthesize name, stackSize, qualityOfService;
- (instancetype)initWithBlock:(void (^)(void))block {
    work_ = block;
    self.stackSize = 512 << 10;
    return self;
}
- (void)start {
    startThread(self.stackSize, [self] {
        if (self.name) pthread_setname_np(pthread_self(), utf8(self.name).substr(0, 15).c_str());
        work_();
    });
}
@end
