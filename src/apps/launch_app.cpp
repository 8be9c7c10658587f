#include "apps/launch_app.h"

#include "accessibility/ax_error.h"

namespace quil {
namespace {

/// Where the application is.
std::string target(Workspace& workspace, Bundles& bundles, const std::string& appId) {
    if (appId.starts_with('/')) {
        if (!appId.ends_with(".app") && !appId.ends_with(bundles.bundleSuffix())) {
            throw AxError::unsupported("launch_app only accepts .app bundles");
        }
        return appId;
    }
    const auto path = workspace.urlForApplicationWithBundleIdentifier(appId);
    if (!path) throw AxError::unsupported("application not found: " + appId);
    return *path;
}

}  // namespace

void launchApp(Workspace& workspace, Bundles& bundles, const std::string& appId) {
    if (!workspace.openUrl(target(workspace, bundles, appId))) {
        throw AxError::failed("launch failed: " + appId);
    }
}

}  // namespace quil
