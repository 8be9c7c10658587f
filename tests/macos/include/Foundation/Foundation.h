// Foundation, as far as the Mac backend uses it.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>

#define nil nullptr
#if defined(__arm64__)
using BOOL = bool;
#else
using BOOL = signed char;
#endif

using NSInteger = long;
using NSUInteger = unsigned long;
using NSTimeInterval = double;
using unichar = unsigned short;

struct NSRange {
    NSUInteger location, length;
};
inline NSRange NSMakeRange(NSUInteger location, NSUInteger length) {
    return {location, length};
}
enum NSComparisonResult : NSInteger { NSOrderedAscending = -1, NSOrderedSame, NSOrderedDescending };
enum NSQualityOfService : NSInteger {
    NSQualityOfServiceUserInitiated = 0x19,
    NSQualityOfServiceDefault = -1,
};

@protocol NSObject
- (BOOL)isKindOfClass:(Class)aClass;
@end

@protocol NSCopying
@end

struct NSFastEnumerationState;
@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)capacity;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject> {
    Class isa;
}
+ (instancetype)alloc;
+ (Class)class;
- (instancetype)init;
@end

@interface NSString : NSObject <NSCopying>
@property(readonly) NSUInteger length;
@property(readonly) double doubleValue;
+ (instancetype)stringWithUTF8String:(const char*)text;
- (instancetype)initWithCharacters:(const unichar*)characters length:(NSUInteger)length;
- (void)getCharacters:(unichar*)buffer range:(NSRange)range;
- (NSComparisonResult)localizedCaseInsensitiveCompare:(NSString*)other;
@end

@interface NSNumber : NSObject <NSCopying>
+ (NSNumber*)numberWithInt:(int)value;
+ (NSNumber*)numberWithLong:(long)value;
+ (NSNumber*)numberWithLongLong:(long long)value;
+ (NSNumber*)numberWithDouble:(double)value;
@property(readonly) double doubleValue;
@property(readonly) unsigned int unsignedIntValue;
@property(readonly, copy) NSString* stringValue;
@end

@interface NSArray<__covariant ObjectType> : NSObject <NSFastEnumeration>
+ (instancetype)array;
+ (instancetype)arrayWithObjects:(const ObjectType[])objects count:(NSUInteger)count;
@end

@interface NSMutableArray<ObjectType> : NSArray <ObjectType>
- (void)addObject:(ObjectType)object;
@end

@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject <NSFastEnumeration>
+ (instancetype)dictionary;
+ (instancetype)dictionaryWithObjects:(const ObjectType[])objects
                              forKeys:(const KeyType<NSCopying>[])keys
                                count:(NSUInteger)count;
- (ObjectType)objectForKeyedSubscript:(KeyType)key;
@end

@interface NSMutableDictionary<KeyType, ObjectType> : NSDictionary <KeyType, ObjectType>
- (void)setObject:(ObjectType)object forKeyedSubscript:(KeyType<NSCopying>)key;
@end

@interface NSData : NSObject
@property(readonly) const void* bytes;
@property(readonly) NSUInteger length;
@end

@interface NSError : NSObject
@end

@interface NSURL : NSObject
+ (NSURL*)fileURLWithPath:(NSString*)path;
@property(readonly, copy) NSString* path;
@end

@interface NSBundle : NSObject
- (instancetype)initWithURL:(NSURL*)url;
@property(readonly, copy) NSString* bundleIdentifier;
@property(readonly, copy) NSDictionary<NSString*, id>* infoDictionary;
@end

@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;
- (NSArray<NSString*>*)contentsOfDirectoryAtPath:(NSString*)path
                                           error:(NSError* __autoreleasing*)error;
@end

@interface NSDate : NSObject
+ (instancetype)date;
@property(class, readonly, copy) NSDate* distantFuture;
@property(readonly) NSTimeInterval timeIntervalSince1970;
@end

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly) NSTimeInterval systemUptime;
@end

@interface NSUUID : NSObject
+ (instancetype)UUID;
@property(readonly, copy) NSString* UUIDString;
@end

@interface NSThread : NSObject
- (instancetype)initWithBlock:(void (^)(void))block;
- (void)start;
@property(copy) NSString* name;
@property NSUInteger stackSize;
@property NSQualityOfService qualityOfService;
@end

using NSRunLoopMode = NSString*;
extern "C" const NSRunLoopMode NSDefaultRunLoopMode;

@interface NSRunLoop : NSObject
@property(class, readonly, strong) NSRunLoop* mainRunLoop;
- (BOOL)runMode:(NSRunLoopMode)mode beforeDate:(NSDate*)limit;
@end
