#include "target/capture_target.h"

#include "attributes/ax_attributes.h"

namespace quil {
namespace {

std::optional<std::string> focusedWindowTitle(Accessibility& accessibility, std::int32_t pid) {
    const ElementRef application = accessibility.createApplication(pid);
    const auto window = axAttribute(accessibility, application, "AXFocusedWindow");
    if (!window || !window->element()) return {};
    return axString(accessibility, window->element(), "AXTitle");
}

}  // namespace

CaptureTarget frontmostTarget(Platform& platform) {
    const auto application = platform.workspace().frontmostApplication();
    if (!application) return {};
    const std::int32_t pid = application->processIdentifier;
    CaptureTarget target;
    target.windowTitle = focusedWindowTitle(platform.accessibility(), pid);
    target.bundleIdentifier = application->bundleIdentifier;
    target.name = application->localizedName;
    target.pid = pid;
    target.executablePath = executablePath(*application);
    target.signingIdentity = signingIdentity(platform.codeSigning(), pid);
    return target;
}

Json targetDictionary(const CaptureTarget& target) {
    Json json = Json::object();
    setOptional(json, "bundleIdentifier", target.bundleIdentifier);
    setOptional(json, "name", target.name);
    setOptional(json, "windowTitle", target.windowTitle);
    setOptional(json, "pid", target.pid);
    setOptional(json, "executablePath", target.executablePath);
    setOptional(json, "signingIdentity", target.signingIdentity);
    return json;
}

std::optional<std::string> executablePath(const RunningApplication& application) {
    return application.executablePath;
}

std::optional<std::string> signingIdentity(CodeSigning& codeSigning, std::int32_t pid) {
    SigningCodeRef guest;
    const Value::Dictionary attributes{{std::string(kGuestAttributePid), Value(pid)}};
    if (codeSigning.copyGuestWithAttributes(attributes, 0, guest) != 0 || !guest) return {};
    SigningCodeRef staticCode;
    if (codeSigning.copyStaticCode(guest, 0, staticCode) != 0 || !staticCode) return {};
    std::optional<Value> information;
    if (codeSigning.copySigningInformation(staticCode, kSigningInformation, information) != 0) {
        return {};
    }
    if (!information || !information->dictionary()) return {};
    const Value::Dictionary& members = *information->dictionary();
    const std::string* team = findString(members, kCodeInfoTeamIdentifier);
    if (team && !team->empty()) return *team;
    const std::string* identifier = findString(members, kCodeInfoIdentifier);
    return identifier ? std::optional(*identifier) : std::nullopt;
}

}  // namespace quil
