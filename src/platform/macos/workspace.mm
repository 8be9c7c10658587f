#import "platform/macos/workspace.h"

#import <AppKit/AppKit.h>

#import "platform/macos/ns_strings.h"

namespace quil::macos {
namespace {

/// How long the launch services may take to open an application, its check by the system included.
constexpr std::chrono::seconds kOpenTimeout{20};

RunningApplication described(NSRunningApplication* application) {
    return {.processIdentifier = application.processIdentifier,
            .bundleIdentifier = optionalUtf8(application.bundleIdentifier),
            .localizedName = optionalUtf8(application.localizedName),
            .executablePath = optionalUtf8(application.executableURL.path),
            .activationPolicy = static_cast<int>(application.activationPolicy)};
}

std::optional<RunningApplication> describedIfAny(NSRunningApplication* application) {
    if (!application) return {};
    return described(application);
}

}  // namespace

std::optional<RunningApplication> MacWorkspace::frontmostApplication() {
    return describedIfAny([NSWorkspace sharedWorkspace].frontmostApplication);
}

std::optional<RunningApplication> MacWorkspace::runningApplicationWithProcessIdentifier(
    std::int32_t pid) {
    return describedIfAny([NSRunningApplication runningApplicationWithProcessIdentifier:pid]);
}

std::vector<RunningApplication> MacWorkspace::runningApplications() {
    std::vector<RunningApplication> applications;
    for (NSRunningApplication* application in [NSWorkspace sharedWorkspace].runningApplications) {
        applications.push_back(described(application));
    }
    return applications;
}

std::optional<std::string> MacWorkspace::urlForApplicationWithBundleIdentifier(
    std::string_view bundleIdentifier) {
    NSURL* url = [[NSWorkspace sharedWorkspace]
        URLForApplicationWithBundleIdentifier:nsString(bundleIdentifier)];
    return optionalUtf8(url.path);
}

bool MacWorkspace::openUrl(std::string_view path) {
    NSURL* url = [NSURL fileURLWithPath:nsString(path)];
    const auto opened = opening_.call<bool>(kOpenTimeout, [url] {
        return static_cast<bool>([[NSWorkspace sharedWorkspace] openURL:url]);
    });
    return opened.value_or(false);
}

}  // namespace quil::macos
