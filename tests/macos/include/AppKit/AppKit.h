// AppKit, as far as the Mac backend uses it.
#pragma once

#include <ApplicationServices/ApplicationServices.h>
#include <Foundation/Foundation.h>

enum NSApplicationActivationPolicy : NSInteger { NSApplicationActivationPolicyProhibited = 2 };

@interface NSApplication : NSObject
@property(class, readonly, strong) NSApplication* sharedApplication;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
@end

@interface NSRunningApplication : NSObject
+ (instancetype)runningApplicationWithProcessIdentifier:(pid_t)pid;
- (BOOL)activateWithOptions:(NSUInteger)options;
@property(readonly) pid_t processIdentifier;
@property(readonly) NSApplicationActivationPolicy activationPolicy;
@property(readonly, copy) NSString* bundleIdentifier;
@property(readonly, copy) NSString* localizedName;
@property(readonly, copy) NSURL* executableURL;
@end

@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
@property(readonly, strong) NSRunningApplication* frontmostApplication;
@property(readonly, copy) NSArray<NSRunningApplication*>* runningApplications;
- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)bundleIdentifier;
- (BOOL)openURL:(NSURL*)url;
@end

using NSDeviceDescriptionKey = NSString*;

@interface NSScreen : NSObject
@property(class, readonly, copy) NSArray<NSScreen*>* screens;
@property(readonly, copy) NSDictionary<NSDeviceDescriptionKey, id>* deviceDescription;
@property(readonly, copy) NSString* localizedName;
@end

using NSPasteboardType = NSString*;

@interface NSPasteboard : NSObject
@property(class, readonly, strong) NSPasteboard* generalPasteboard;
- (NSInteger)clearContents;
- (NSString*)stringForType:(NSPasteboardType)type;
- (BOOL)setString:(NSString*)string forType:(NSPasteboardType)type;
@end

enum NSEventType : NSUInteger { NSEventTypeKeyDown = 10, NSEventTypeKeyUp = 11 };

@interface NSEvent : NSObject
+ (NSEvent*)eventWithCGEvent:(CGEventRef)event;
@property(readonly) NSEventType type;
@property(readonly, copy) NSString* characters;
@end

enum NSBitmapImageFileType : NSUInteger { NSBitmapImageFileTypePNG = 4 };
using NSBitmapImageRepPropertyKey = NSString*;

@interface NSBitmapImageRep : NSObject
- (instancetype)initWithCGImage:(CGImageRef)image;
- (NSData*)representationUsingType:(NSBitmapImageFileType)type
                        properties:(NSDictionary<NSBitmapImageRepPropertyKey, id>*)properties;
@end
