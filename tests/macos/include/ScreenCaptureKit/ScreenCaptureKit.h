// ScreenCaptureKit, as far as the Mac backend uses it.
#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <Foundation/Foundation.h>

@interface SCRunningApplication : NSObject
@property(readonly) pid_t processID;
@end

@interface SCWindow : NSObject
@property(readonly) CGWindowID windowID;
@property(nonatomic, readonly) CGRect frame;
@property(readonly) NSInteger windowLayer;
@property(readonly) SCRunningApplication* owningApplication;
@end

@interface SCDisplay : NSObject
@property(readonly) CGDirectDisplayID displayID;
@property(nonatomic, readonly) CGRect frame;
@end

@interface SCShareableContent : NSObject
+ (void)getShareableContentExcludingDesktopWindows:(BOOL)excludeDesktopWindows
                               onScreenWindowsOnly:(BOOL)onScreenWindowsOnly
                                 completionHandler:
                                     (void (^)(SCShareableContent* content, NSError* error))handler;
@property(readonly) NSArray<SCWindow*>* windows;
@property(readonly) NSArray<SCDisplay*>* displays;
@end

@interface SCContentFilter : NSObject
- (instancetype)initWithDesktopIndependentWindow:(SCWindow*)window;
- (instancetype)initWithDisplay:(SCDisplay*)display excludingWindows:(NSArray<SCWindow*>*)excluded;
@end

@interface SCStreamConfiguration : NSObject
@property unsigned long width;
@property unsigned long height;
@property BOOL showsCursor;
@end

__attribute__((availability(macos, introduced = 14.0)))
@interface SCScreenshotManager : NSObject
+ (void)captureImageWithFilter:(SCContentFilter*)filter
                 configuration:(SCStreamConfiguration*)configuration
             completionHandler:(void (^)(CGImageRef image, NSError* error))handler;
@end
