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

CGRect rectangle(const Rect& bounds) {
    return {{bounds.x, bounds.y}, {bounds.width, bounds.height}};
}

}  // namespace

@implementation SCRunningApplication
+ (instancetype)of:(pid_t)pid {
    SCRunningApplication* application = [[self alloc] init];
    application->_processID = pid;
    return application;
}
@end

@implementation SCWindow {
  @public
    ShareableWindow listed;
}
+ (instancetype)of:(const ShareableWindow&)entry {
    SCWindow* window = [[self alloc] init];
    window->listed = entry;
    window->_windowID = entry.windowId;
    window->_frame = rectangle(entry.frame);
    window->_windowLayer = entry.windowLayer;
    const auto owner = entry.owningProcessId;
    window->_owningApplication = owner ? [SCRunningApplication of:*owner] : nil;
    return window;
}
@end

@implementation SCDisplay {
  @public
    ShareableDisplay listed;
}
+ (instancetype)of:(const ShareableDisplay&)entry {
    SCDisplay* display = [[self alloc] init];
    display->listed = entry;
    display->_displayID = entry.displayId;
    display->_frame = rectangle(entry.frame);
    return display;
}
@end

@implementation SCShareableContent
+ (instancetype)of:(const std::optional<ShareableContent>&)listed {
    if (!listed) return nil;
    SCShareableContent* content = [[self alloc] init];
    content->_windows = array(listed->windows, [](auto& entry) { return [SCWindow of:entry]; });
    content->_displays = array(listed->displays, [](auto& entry) { return [SCDisplay of:entry]; });
    return content;
}
+ (void)getShareableContentExcludingDesktopWindows:(BOOL)excludingDesktopWindows
                               onScreenWindowsOnly:(BOOL)onScreenOnly
                                 completionHandler:
                                     (void (^)(SCShareableContent*, NSError*))handler {
    answerLater("getShareableContent", [=] {
        const auto content =
            services->screenCapture().getShareableContent(excludingDesktopWindows, onScreenOnly);
        handler([SCShareableContent of:content], errorUnless(content.has_value()));
    });
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
                           ? capture.captureImage(filter->window_->listed, asked)
                           : capture.captureDisplayImage(filter->display_->listed, asked);
        const bool success = image->image != nullptr;
        handler(success ? (CGImageRef)(__bridge void*)image : nullptr, errorUnless(success));
    });
}
@end
