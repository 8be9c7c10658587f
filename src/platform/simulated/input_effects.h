#pragma once

#include "platform/simulated/log.h"

namespace quil {
class SimulatedDesktop;
}

namespace quil::simulated {

/// Lets a posted event do what it would do on a desktop:
///
/// - A left button press picks the frontmost window that holds the point and, in it, the deepest
///   element (of siblings the last) whose bounds hold it. The window comes to the front with its
///   application and gets the focus, and so does the nearest element that can have it (one with the
///   attribute "AXFocused"), from the picked one upward.
/// - The release performs "AXPress" on the nearest element that offers it, from the picked one
///   upward, if that is the same as at the press and not disabled.
/// - A right button press performs "AXShowMenu" on the nearest element that offers it.
/// - A key press with a text adds it to the "AXValue" of the frontmost application's focused
///   element, if that is a string.
/// - Command and V adds the pasteboard's plain text in the same way; the delete key without flags
///   removes the last character.
///
/// Everything else has no effect.
void actUpon(SimulatedDesktop& desktop, const PostedEvent& event);

}  // namespace quil::simulated
