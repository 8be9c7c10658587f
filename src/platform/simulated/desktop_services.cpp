// Permissions, displays, applications, what is on disk, and time.
#include <algorithm>
#include <cstdio>

#include "platform/simulated/services.h"
#include "text/characters.h"

namespace quil::simulated {
namespace {

std::string_view folderOf(std::string_view path) {
    return path.substr(0, path.rfind('/'));
}
std::string_view entryOf(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

struct ProcessCode : SigningCode {
    explicit ProcessCode(std::int32_t processId) : pid(processId) {}
    const std::int32_t pid;
};

}  // namespace

bool SimulatedPermissions::isProcessTrusted() {
    const auto guard = desktop_.lock();
    return !desktop_.enter("isProcessTrusted") && desktop_.permissions.accessibility;
}

bool SimulatedPermissions::preflightScreenCaptureAccess() {
    const auto guard = desktop_.lock();
    return !desktop_.enter("preflightScreenCaptureAccess") && desktop_.permissions.screenRecording;
}

bool SimulatedPermissions::preflightListenEventAccess() {
    const auto guard = desktop_.lock();
    return !desktop_.enter("preflightListenEventAccess") && desktop_.permissions.inputMonitoring;
}

bool SimulatedPermissions::requestListenEventAccess() {
    const auto guard = desktop_.lock();
    auto& permissions = desktop_.permissions;
    if (!desktop_.enter("requestListenEventAccess") && permissions.grantsInputMonitoring) {
        permissions.inputMonitoring = true;
    }
    desktop_.record(PermissionRequest{permissions.inputMonitoring});
    return permissions.inputMonitoring;
}

std::int32_t SimulatedDisplays::getActiveDisplayList(std::uint32_t capacity, std::uint32_t* ids,
                                                     std::uint32_t* count) {
    const auto guard = desktop_.lock();
    if (const auto failure = desktop_.enter("getActiveDisplayList")) return failure->code;
    const auto active = static_cast<std::uint32_t>(desktop_.displays.size());
    *count = capacity == 0 ? active : std::min(capacity, active);
    if (capacity == 0) return 0;
    for (std::uint32_t i = 0; i < *count; ++i) ids[i] = desktop_.displays[i].id;
    return 0;
}

Rect SimulatedDisplays::displayBounds(std::uint32_t display) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("displayBounds")) return {};
    for (const auto& active : desktop_.displays) {
        if (active.id == display) return active.bounds;
    }
    const auto& main = desktop_.sleepingMainDisplay;
    return desktop_.displays.empty() && display == main.id ? main.bounds : Rect{};
}

std::uint32_t SimulatedDisplays::mainDisplayId() {
    const auto guard = desktop_.lock();
    return desktop_.displays.empty() ? desktop_.sleepingMainDisplay.id
                                     : desktop_.displays.front().id;
}

std::vector<Screen> SimulatedDisplays::screens() {
    const auto guard = desktop_.lock();
    if (desktop_.enter("screens")) return {};
    std::vector<Screen> screens = desktop_.extraScreens;
    for (const auto& display : desktop_.displays) {
        if (display.name) screens.push_back({display.id, *display.name});
    }
    return screens;
}

std::optional<RunningApplication> SimulatedWorkspace::frontmostApplication() {
    const auto guard = desktop_.lock();
    if (desktop_.enter("frontmostApplication") || !desktop_.frontmost()) return {};
    return desktop_.frontmost()->facts();
}

std::optional<RunningApplication> SimulatedWorkspace::runningApplicationWithProcessIdentifier(
    std::int32_t pid) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("runningApplicationWithProcessIdentifier")) return {};
    const Application* application = desktop_.findApplication(pid);
    if (!application) return {};
    return application->facts();
}

std::vector<RunningApplication> SimulatedWorkspace::runningApplications() {
    const auto guard = desktop_.lock();
    if (desktop_.enter("runningApplications")) return {};
    std::vector<RunningApplication> result;
    for (const auto& application : desktop_.applications()) result.push_back(application->facts());
    return result;
}

std::optional<std::string> SimulatedWorkspace::urlForApplicationWithBundleIdentifier(
    std::string_view bundleIdentifier) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("urlForApplicationWithBundleIdentifier", {bundleIdentifier})) return {};
    for (const auto& file : desktop_.bundles()) {
        if (file.isBundle && file.bundle.bundleIdentifier == bundleIdentifier) return file.path;
    }
    return {};
}

bool SimulatedWorkspace::openUrl(std::string_view path) {
    const auto guard = desktop_.lock();
    const auto& bundles = desktop_.bundles();
    const auto file = std::ranges::find(bundles, path, &SimulatedDesktop::BundleFile::path);
    const bool refused = desktop_.enter("openUrl", {path}).has_value();
    const bool opened = !refused && file != bundles.end() && file->isBundle;
    desktop_.record(Launch{std::string(path), opened});
    if (!opened) return false;
    if (file->launch) {
        Change(file->launch)(desktop_);
        return true;
    }
    for (const auto& application : desktop_.applications()) {
        const auto& identifier = application->facts().bundleIdentifier;
        if (identifier && identifier == file->bundle.bundleIdentifier) {
            application->activate();
            break;
        }
    }
    return true;
}

std::int32_t SimulatedCodeSigning::copyGuestWithAttributes(const Value::Dictionary& attributes,
                                                           std::uint32_t, SigningCodeRef& guest) {
    const auto guard = desktop_.lock();
    if (const auto failure = desktop_.enter("copyGuestWithAttributes")) return failure->code;
    const Value* pid = findMember(attributes, kGuestAttributePid);
    const auto number = pid ? pid->integer() : std::nullopt;
    const auto& applications = desktop_.applications();
    const auto found = std::ranges::find_if(
        applications, [&](const auto& application) { return application->pid() == number; });
    if (found == applications.end()) return usualFailureCode("copyGuestWithAttributes");
    guest = std::make_shared<ProcessCode>((*found)->pid());
    return 0;
}

std::int32_t SimulatedCodeSigning::copyStaticCode(const SigningCodeRef& guest, std::uint32_t,
                                                  SigningCodeRef& staticCode) {
    const auto guard = desktop_.lock();
    if (const auto failure = desktop_.enter("copyStaticCode")) return failure->code;
    staticCode = guest;
    return 0;
}

std::int32_t SimulatedCodeSigning::copySigningInformation(const SigningCodeRef& staticCode,
                                                          std::uint32_t,
                                                          std::optional<Value>& information) {
    const auto guard = desktop_.lock();
    if (const auto failure = desktop_.enter("copySigningInformation")) return failure->code;
    const auto code = std::static_pointer_cast<const ProcessCode>(staticCode);
    const Application* application = desktop_.findApplication(code->pid);
    if (!application || !application->signingInformation()) {
        return usualFailureCode("copySigningInformation");
    }
    information = application->signingInformation();
    return 0;
}

std::vector<std::string> SimulatedBundles::applicationFolders() {
    const auto guard = desktop_.lock();
    return desktop_.applicationFolders;
}

std::string SimulatedBundles::bundleSuffix() {
    const auto guard = desktop_.lock();
    return desktop_.bundleSuffix;
}

std::optional<std::vector<std::string>> SimulatedBundles::contentsOfDirectory(
    std::string_view path) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("contentsOfDirectory", {path})) return {};
    if (desktop_.unlistableFolders.contains(path)) return {};
    std::vector<std::string> entries;
    for (const auto& file : desktop_.bundles()) {
        if (folderOf(file.path) == path) entries.emplace_back(entryOf(file.path));
    }
    return entries;
}

std::optional<Bundle> SimulatedBundles::openBundle(std::string_view path) {
    const auto guard = desktop_.lock();
    if (desktop_.enter("openBundle", {path})) return {};
    for (const auto& file : desktop_.bundles()) {
        if (file.path == path && file.isBundle) return file.bundle;
    }
    return {};
}

int SimulatedCollation::localizedCaseInsensitiveCompare(std::string_view a, std::string_view b) {
    return lowercased(a).compare(lowercased(b));
}

double SimulatedClock::timeIntervalSince1970() {
    return desktop_.clock().wallClock();
}

double SimulatedClock::systemUptime() {
    return desktop_.clock().uptime();
}

/// On a virtual clock nothing comes before the next change, so one sleep takes all steps up to
/// that.
void SimulatedClock::sleepStep(std::uint32_t microseconds, double end) {
    const DesktopClock& clock = desktop_.clock();
    const std::chrono::nanoseconds step = std::chrono::microseconds(microseconds);
    std::int64_t steps = 1;
    if (clock.isVirtual() && step.count() > 0) {
        auto wait = DesktopClock::nanoseconds(end - clock.uptime());
        if (const auto next = desktop_.nextChange()) wait = std::min(wait, *next - clock.passed());
        steps = std::max<std::int64_t>(1, wait / step + (wait % step > step.zero()));
    }
    sleep(static_cast<std::uint64_t>(steps) * microseconds);
}

void SimulatedClock::sleep(std::uint64_t microseconds) {
    desktop_.record(Pause{microseconds});
    desktop_.pass(std::chrono::microseconds(microseconds));
}

std::string SimulatedClock::uuidString() {
    char text[64];
    std::snprintf(text, sizeof text, "00000000-0000-4000-8000-%012X", ++uuids_);
    return text;
}

}  // namespace quil::simulated
