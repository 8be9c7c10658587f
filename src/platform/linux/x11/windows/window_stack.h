#pragma once

#include <optional>
#include <vector>

#include "platform/linux/x11/windows/windows.h"

namespace quil::linux_platform {

/// All top-level windows, front to back, those included that are minimised or on other workspaces:
/// the window manager's stacking list or, when it has none or there is no window manager, what is
/// shown on the root window. Menus, tooltips and other windows that bypass the window manager are
/// not among them.
std::vector<X11Window> topLevelWindows(X11Connection& connection);

/// The window that the user works in: the window manager's active window, else the top-level
/// window that holds the input focus. Without a window manager, keys often go to whatever window
/// the pointer is in; then it is that window, else the topmost one. Nothing when there is none or
/// it has just gone.
std::optional<X11Window> activeWindow(X11Connection& connection);

/// The active window once it has come: it is shown, and no other top-level window has the input
/// focus that it takes. Window managers may name a window active that has just been minimised, and
/// name one a moment before they give it the focus. Nothing until then.
std::optional<X11Window> windowInFront(X11Connection& connection);

}  // namespace quil::linux_platform
