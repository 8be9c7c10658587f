#pragma once

#include "json/json.h"
#include "platform/window_list.h"
#include "platform/workspace.h"

namespace quil {

/// The ordinary application windows on screen, front to back, each as the protocol's window entry.
/// An empty list when the platform gives none.
Json windowsList(WindowList& windowList, Workspace& workspace);

}  // namespace quil
