// Core Foundation, as far as the Mac backend uses it.
#pragma once

#include <cstdint>

extern "C" {

#if __has_feature(objc_arc)
#define QUIL_BRIDGED(type) __attribute__((objc_bridge(type)))
#else
#define QUIL_BRIDGED(type)
#endif

using Boolean = unsigned char;
using SInt32 = int;
using UInt32 = unsigned int;
using UniChar = unsigned short;
using UniCharCount = unsigned long;
using OSStatus = SInt32;
using pid_t = int;

using CFIndex = long;
using CFTypeID = unsigned long;
using CFTypeRef = const void*;
using CFAllocatorRef = const struct __CFAllocator*;
typedef const struct QUIL_BRIDGED(NSString) __CFString* CFStringRef;
typedef const struct QUIL_BRIDGED(NSNumber) __CFBoolean* CFBooleanRef;
typedef const struct QUIL_BRIDGED(NSNumber) __CFNumber* CFNumberRef;
typedef const struct QUIL_BRIDGED(NSArray) __CFArray* CFArrayRef;
typedef const struct QUIL_BRIDGED(NSDictionary) __CFDictionary* CFDictionaryRef;
using CFRunLoopMode = CFStringRef;
using CFRunLoopRef = struct __CFRunLoop*;
using CFRunLoopSourceRef = struct __CFRunLoopSource*;
using CFMachPortRef = struct __CFMachPort*;

CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);
CFStringRef CFCopyTypeIDDescription(CFTypeID type);

extern const CFAllocatorRef kCFAllocatorDefault;
extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;
extern const CFRunLoopMode kCFRunLoopCommonModes;
extern const CFRunLoopMode kCFRunLoopDefaultMode;

CFTypeID CFStringGetTypeID();
CFTypeID CFBooleanGetTypeID();
CFTypeID CFNumberGetTypeID();
CFTypeID CFArrayGetTypeID();
CFTypeID CFDictionaryGetTypeID();
CFTypeID CFNullGetTypeID();

Boolean CFBooleanGetValue(CFBooleanRef boolean);

enum CFNumberType : CFIndex { kCFNumberSInt64Type = 4 };
Boolean CFNumberIsFloatType(CFNumberRef number);
CFIndex CFNumberGetByteSize(CFNumberRef number);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);

struct CFRunLoopSourceContext {
    CFIndex version;
    void* info;
    void (*perform)(void* info);
};
CFRunLoopRef CFRunLoopGetCurrent();
CFRunLoopRef CFRunLoopGetMain();
void CFRunLoopRun();
enum CFRunLoopRunResult : SInt32 { kCFRunLoopRunFinished = 1 };
CFRunLoopRunResult CFRunLoopRunInMode(CFRunLoopMode mode, double seconds,
                                      Boolean returnAfterSourceHandled);
void CFRunLoopStop(CFRunLoopRef runLoop);
void CFRunLoopWakeUp(CFRunLoopRef runLoop);
void CFRunLoopPerformBlock(CFRunLoopRef runLoop, CFTypeRef mode, void (^block)(void));
void CFRunLoopAddSource(CFRunLoopRef runLoop, CFRunLoopSourceRef source, CFRunLoopMode mode);
void CFRunLoopRemoveSource(CFRunLoopRef runLoop, CFRunLoopSourceRef source, CFRunLoopMode mode);
CFRunLoopSourceRef CFRunLoopSourceCreate(CFAllocatorRef allocator, CFIndex order,
                                         CFRunLoopSourceContext* context);
void CFRunLoopSourceInvalidate(CFRunLoopSourceRef source);
void CFRunLoopSourceSignal(CFRunLoopSourceRef source);

CFRunLoopSourceRef CFMachPortCreateRunLoopSource(CFAllocatorRef allocator, CFMachPortRef port,
                                                 CFIndex order);
void CFMachPortInvalidate(CFMachPortRef port);

}  // extern "C"
