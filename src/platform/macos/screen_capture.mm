#import "platform/macos/screen_capture.h"

#import <AppKit/AppKit.h>
#import <ScreenCaptureKit/ScreenCaptureKit.h>

#import "platform/macos/cf_ref.h"
#import "platform/macos/completion_result.h"

namespace quil::macos {
namespace {

/// How long one response of the system's capture service is waited for; it usually takes a fraction
/// of a second.
constexpr std::chrono::seconds kCaptureTimeout{10};

/// Kept from the listing to the capture: a filter is made from the listed window itself.
struct ListedWindow : PlatformWindow {
    explicit ListedWindow(SCWindow* object) : window(object) {}
    SCWindow* const window;
};

struct ListedDisplay : PlatformWindow {
    explicit ListedDisplay(SCDisplay* object) : display(object) {}
    SCDisplay* const display;
};

struct MacImage : CapturedImage {
    explicit MacImage(CfRef<CGImageRef> object) : image(std::move(object)) {}
    const CfRef<CGImageRef> image;
};

ShareableWindow described(SCWindow* window) {
    const CGRect frame = window.frame;
    ShareableWindow result{
        .windowId = window.windowID,
        .windowLayer = window.windowLayer,
        .owningProcessId = {},
        .frame = {frame.origin.x, frame.origin.y, frame.size.width, frame.size.height},
        .platformWindow = std::make_shared<ListedWindow>(window)};
    if (SCRunningApplication* owner = window.owningApplication) {
        result.owningProcessId = owner.processID;
    }
    return result;
}

ShareableDisplay described(SCDisplay* display) {
    const CGRect frame = display.frame;
    return {.displayId = display.displayID,
            .frame = {frame.origin.x, frame.origin.y, frame.size.width, frame.size.height},
            .platformDisplay = std::make_shared<ListedDisplay>(display)};
}

std::unique_ptr<CapturedImage> capture(SCContentFilter* filter,
                                       const StreamConfiguration& configuration) {
    if (configuration.width < 1 || configuration.height < 1) return nullptr;
    if (@available(macOS 14.0, *)) {
        SCStreamConfiguration* settings = [[SCStreamConfiguration alloc] init];
        settings.width = static_cast<std::size_t>(configuration.width);
        settings.height = static_cast<std::size_t>(configuration.height);
        settings.showsCursor = configuration.showsCursor;
        const auto result = std::make_shared<CompletionResult<CfRef<CGImageRef>>>();
        [SCScreenshotManager
            captureImageWithFilter:filter
                     configuration:settings
                 completionHandler:^(CGImageRef image, NSError* error) {
                   result->deliver(CfRef<CGImageRef>::share(error ? nullptr : image));
                 }];
        auto image = result->await(kCaptureTimeout);
        if (image) return std::make_unique<MacImage>(std::move(image));
    }
    return nullptr;
}

}  // namespace

std::optional<ShareableContent> MacScreenCapture::getShareableContent(bool excludingDesktopWindows,
                                                                      bool onScreenWindowsOnly) {
    const auto shareable = std::make_shared<CompletionResult<SCShareableContent*>>();
    [SCShareableContent
        getShareableContentExcludingDesktopWindows:excludingDesktopWindows
                               onScreenWindowsOnly:onScreenWindowsOnly
                                 completionHandler:^(SCShareableContent* content, NSError* error) {
                                   shareable->deliver(error ? nil : content);
                                 }];
    SCShareableContent* content = shareable->await(kCaptureTimeout);
    if (!content) return {};
    ShareableContent result;
    for (SCWindow* window in content.windows) result.windows.push_back(described(window));
    for (SCDisplay* display in content.displays) result.displays.push_back(described(display));
    return result;
}

std::unique_ptr<CapturedImage> MacScreenCapture::captureImage(
    const ShareableWindow& window, const StreamConfiguration& configuration) {
    if (!window.platformWindow) return nullptr;
    return capture(
        [[SCContentFilter alloc] initWithDesktopIndependentWindow:static_cast<const ListedWindow&>(
                                                                      *window.platformWindow)
                                                                      .window],
        configuration);
}

std::unique_ptr<CapturedImage> MacScreenCapture::captureDisplayImage(
    const ShareableDisplay& display, const StreamConfiguration& configuration) {
    if (!display.platformDisplay) return nullptr;
    return capture(
        [[SCContentFilter alloc]
             initWithDisplay:static_cast<const ListedDisplay&>(*display.platformDisplay).display
            excludingWindows:[[NSArray alloc] init]],
        configuration);
}

std::string MacScreenCapture::pngRepresentation(const CapturedImage& image) {
    NSBitmapImageRep* bitmap =
        [[NSBitmapImageRep alloc] initWithCGImage:static_cast<const MacImage&>(image).image.get()];
    NSData* png = [bitmap representationUsingType:NSBitmapImageFileTypePNG properties:@{}];
    return {static_cast<const char*>(png.bytes), png.length};
}

}  // namespace quil::macos
