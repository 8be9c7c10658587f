#pragma once

#include <string>

#include "platform/bundles.h"
#include "platform/workspace.h"

namespace quil {

/// Opens an application without waiting for it. `appId` is a bundle identifier, or the absolute
/// path of a bundle: one that ends in ".app" or as the platform's bundles do. Throws an `AxError`:
/// `unsupported` for another path and for an identifier that no installed application has, `failed`
/// when the application cannot be opened.
void launchApp(Workspace& workspace, Bundles& bundles, const std::string& appId);

}  // namespace quil
