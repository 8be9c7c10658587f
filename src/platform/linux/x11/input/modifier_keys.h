#pragma once

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/input/posted_event.h"

namespace quil::linux_platform {

/// Whether the event is the press or release of a modifier key that is to be held around other
/// events: it carries modifier flags, or none once the last one is released.
bool isModifierKey(const PostedEvent& event);

/// Presses or releases the key that the layout has for it: Control for the command flag as well.
/// `runtime` is a window of ours, by which others know whether this process is there.
void holdModifierKey(X11Connection& connection, const PostedEvent& event, xcb_window_t runtime);

}  // namespace quil::linux_platform
