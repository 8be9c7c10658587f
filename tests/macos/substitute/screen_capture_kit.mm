// ScreenCaptureKit. Completion handlers are called once, on a thread of the system's, when the
// answer comes.
#import <ScreenCaptureKit/ScreenCaptureKit.h>

#include "core_graphics.h"

using namespace quil;
using namespace quil::substitute;

@implementation ImageObject
@end

namespace {

NSError* errorUnless(bool success) {
    return success || mac.silentErrors ? nil : [[NSError alloc] init];
}

}  // namespace

@implementation SCRunningApplication {
  @public
    pid_t pid_;
}
- (pid_t)processID {
    return pid_;
}
@end

@implementation SCWindow {
  @public
    ShareableWindow window_;
}
- (CGWindowID)windowID {
    return window_.windowId;
}
- (CGRect)frame {
    const Rect& frame = window_.frame;
    return {{frame.x, frame.y}, {frame.width, frame.height}};
}
- (NSInteger)windowLayer {
    return window_.windowLayer;
}
- (SCRunningApplication*)owningApplication {
    if (!window_.owningProcessId) return nil;
    SCRunningApplication* application = [[SCRunningApplication alloc] init];
    application->pid_ = *window_.owningProcessId;
    return application;
}
@end

@implementation SCDisplay {
  @public
    ShareableDisplay display_;
}
- (CGDirectDisplayID)displayID {
    return display_.displayId;
}
- (CGRect)frame {
    const Rect& frame = display_.frame;
    return {{frame.x, frame.y}, {frame.width, frame.height}};
}
@end

@implementation SCShareableContent {
    NSArray* windows_;
    NSArray* displays_;
}
+ (void)getShareableContentExcludingDesktopWindows:(BOOL)excludingDesktopWindows
                               onScreenWindowsOnly:(BOOL)onScreenOnly
                                 completionHandler:
                                     (void (^)(SCShareableContent*, NSError*))handler {
    answerLater("getShareableContent", [=] {
        const auto content =
            services->screenCapture().getShareableContent(excludingDesktopWindows, onScreenOnly);
        SCShareableContent* answer = nil;
        if (content) {
            answer = [[SCShareableContent alloc] init];
            answer->windows_ = array(content->windows, [](const ShareableWindow& entry) {
                SCWindow* window = [[SCWindow alloc] init];
                window->window_ = entry;
                return window;
            });
            answer->displays_ = array(content->displays, [](const ShareableDisplay& entry) {
                SCDisplay* display = [[SCDisplay alloc] init];
                display->display_ = entry;
                return display;
            });
        }
        handler(answer, errorUnless(content.has_value()));
    });
}
- (NSArray*)windows {
    return windows_;
}
- (NSArray*)displays {
    return displays_;
}
@end

@implementation SCContentFilter {
  @public
    SCWindow* window_;
    SCDisplay* display_;
}
- (instancetype)initWithDisplay:(SCDisplay*)display excludingWindows:(NSArray*)excluded {
    if (!display || !excluded) violation("initWithDisplay: nil");
    display_ = display;
    return self;
}
- (instancetype)initWithDesktopIndependentWindow:(SCWindow*)window {
    if (!window) violation("initWithDesktopIndependentWindow: nil");
    window_ = window;
    return self;
}
@end

@implementation SCStreamConfiguration
@synthesize width, height, showsCursor;
- (instancetype)init {
    self.width = 1920;
    self.height = 1080;
    self.showsCursor = true;
    return self;
}
@end

@implementation SCScreenshotManager
+ (void)captureImageWithFilter:(SCContentFilter*)filter
                 configuration:(SCStreamConfiguration*)configuration
             completionHandler:(void (^)(CGImageRef, NSError*))handler {
    if (mac.version < 14) violation("SCScreenshotManager before macOS 14");
    if (configuration.showsCursor) violation("the pointer in a picture");
    const StreamConfiguration asked{.width = static_cast<std::int64_t>(configuration.width),
                                    .height = static_cast<std::int64_t>(configuration.height),
                                    .showsCursor = configuration.showsCursor != 0};
    answerLater("captureImage", [=] {
        ImageObject* image = [[ImageObject alloc] init];
        ScreenCapture& capture = services->screenCapture();
        image->image = filter->window_
                           ? capture.captureImage(filter->window_->window_, asked)
                           : capture.captureDisplayImage(filter->display_->display_, asked);
        const bool success = image->image != nullptr;
        handler(success ? (CGImageRef)(__bridge void*)image : nullptr, errorUnless(success));
    });
}
@end
