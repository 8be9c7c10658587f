#include "apps/launch_app.h"

#include "accessibility/ax_error.h"

namespace quil {
namespace {

/// Where the application is.
std::string target(Platform& platform, const std::string& appId) {
    if (appId.starts_with('/')) {
        if (!appId.ends_with(".app") && !appId.ends_with(platform.bundles().bundleSuffix())) {
            throw AxError::unsupported("launch_app only accepts .app bundles");
        }
        return appId;
    }
    const auto path = platform.workspace().urlForApplicationWithBundleIdentifier(appId);
    if (!path) throw AxError::unsupported("application not found: " + appId);
    return *path;
}

}  // namespace

void launchApp(Platform& platform, const std::string& appId) {
    if (!platform.workspace().openUrl(target(platform, appId))) {
        throw AxError::failed("launch failed: " + appId);
    }
}

}  // namespace quil
