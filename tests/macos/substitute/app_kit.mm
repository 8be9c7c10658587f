// AppKit.
#import <AppKit/AppKit.h>

#include <atomic>
#include <mutex>
#include <thread>

#include "collections.h"
#include "core_graphics.h"

using namespace quil;
using namespace quil::substitute;

namespace {

std::atomic<bool> isApplication = false;

}  // namespace

@implementation NSApplication
+ (NSApplication*)sharedApplication {
    mainThreadOnly();
    static NSApplication* application = singleton([[NSApplication alloc] init]);
    isApplication = true;
    return application;
}
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
    mainThreadOnly();
    if (policy != NSApplicationActivationPolicyProhibited) violation("a child process in the Dock");
    return true;
}
@end

void quil::substitute::applicationObjectNeeded(const char* call) {
    if (!isApplication) violation(std::string(call) + " without an application object");
}

@implementation NSRunningApplication
+ (instancetype)of:(const std::optional<RunningApplication>&)facts {
    if (!facts) return nil;
    NSRunningApplication* application = [[self alloc] init];
    application->_processIdentifier = facts->processIdentifier;
    application->_activationPolicy =
        static_cast<NSApplicationActivationPolicy>(facts->activationPolicy);
    application->_bundleIdentifier = optionalString(facts->bundleIdentifier);
    application->_localizedName = optionalString(facts->localizedName);
    application->_executableURL =
        facts->executablePath ? [NSURL fileURLWithPath:string(*facts->executablePath)] : nil;
    return application;
}
+ (instancetype)runningApplicationWithProcessIdentifier:(pid_t)pid {
    return [self of:services->workspace().runningApplicationWithProcessIdentifier(pid)];
}
/// The first window of the application comes to the front with it.
- (BOOL)activateWithOptions:(NSUInteger)options {
    const auto windows = services->windowList().copyWindowInfo(0, 0);
    for (const Value& window : *windows->list()) {
        const Value* owner = findMember(*window.dictionary(), kWindowOwnerPid);
        if (!owner || owner->integer() != _processIdentifier) continue;
        return services->windowList().activateWindow(
            *findMember(*window.dictionary(), kWindowNumber)->integer());
    }
    return false;
}
@end

@implementation NSWorkspace
+ (NSWorkspace*)sharedWorkspace {
    static NSWorkspace* workspace = singleton([[NSWorkspace alloc] init]);
    return workspace;
}
- (NSRunningApplication*)frontmostApplication {
    return [NSRunningApplication of:services->workspace().frontmostApplication()];
}
- (NSArray*)runningApplications {
    return array(services->workspace().runningApplications(),
                 [](const auto& facts) { return [NSRunningApplication of:facts]; });
}
- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)identifier {
    const auto path = services->workspace().urlForApplicationWithBundleIdentifier(utf8(identifier));
    return path ? [NSURL fileURLWithPath:string(*path)] : nil;
}
- (BOOL)openURL:(NSURL*)url {
    block("openURL");
    return services->workspace().openUrl(utf8(url.path));
}
@end

@implementation NSScreen
+ (NSArray*)screens {
    mainThreadOnly();
    applicationObjectNeeded();
    return array(services->displays().screens(), [](const Screen& entry) {
        NSScreen* screen = [[NSScreen alloc] init];
        screen->_localizedName = string(entry.localizedName);
        screen->_deviceDescription = @{};
        if (entry.screenNumber) {
            const auto number = static_cast<long>(*entry.screenNumber);
            screen->_deviceDescription = @{@"NSScreenNumber" : @(number)};
        }
        return screen;
    });
}
@end

namespace {

/// The pasteboard is for one thread, whichever is the first.
void pasteboardThreadOnly() {
    static std::mutex mutex;
    static std::thread::id user;
    const std::lock_guard guard(mutex);
    if (user == std::thread::id()) user = std::this_thread::get_id();
    if (user != std::this_thread::get_id()) violation("the pasteboard is used by two threads");
}

}  // namespace

@implementation NSPasteboard
+ (NSPasteboard*)generalPasteboard {
    pasteboardThreadOnly();
    static NSPasteboard* pasteboard = singleton([[NSPasteboard alloc] init]);
    return pasteboard;
}
- (NSInteger)clearContents {
    pasteboardThreadOnly();
    services->pasteboard().clearContents();
    return 1;
}
- (NSString*)stringForType:(NSPasteboardType)type {
    pasteboardThreadOnly();
    block("stringForType");
    return optionalString(services->pasteboard().stringForType(utf8(type)));
}
- (BOOL)setString:(NSString*)text forType:(NSPasteboardType)type {
    pasteboardThreadOnly();
    return services->pasteboard().setString(utf8(text), utf8(type));
}
@end

@implementation NSEvent {
    EventObject* event_;
}
+ (NSEvent*)eventWithCGEvent:(CGEventRef)reference {
    mainThreadOnly();
    applicationObjectNeeded();
    NSEvent* event = [[self alloc] init];
    event->event_ = own<EventObject>(reference);
    return event;
}
- (NSEventType)type {
    return static_cast<NSEventType>(event_->type);
}
- (NSString*)characters {
    mainThreadOnly();
    if (event_->type != kCGEventKeyDown && event_->type != kCGEventKeyUp) {
        violation("characters of an event that is no key event");
    }
    return optionalString(event_->characters);
}
@end

@implementation NSBitmapImageRep {
    ImageObject* image_;
}
- (instancetype)initWithCGImage:(CGImageRef)image {
    image_ = own<ImageObject>(image);
    return self;
}
- (NSData*)representationUsingType:(NSBitmapImageFileType)type
                        properties:(NSDictionary*)properties {
    if (type != NSBitmapImageFileTypePNG || !properties) violation("a picture that is no PNG");
    NSData* data = [[NSData alloc] init];
    data->content = services->screenCapture().pngRepresentation(*image_->image);
    return data;
}
@end
