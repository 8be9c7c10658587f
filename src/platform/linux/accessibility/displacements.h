#pragma once

#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/linux/accessibility/located_window.h"
#include "platform/linux/accessibility/observed_element.h"
#include "platform/linux/atspi/accessibility_bus.h"

/// Toolkits give some elements coordinates that are not those of their window: what is in menus, in
/// panes that a program paints itself, in pages of another process.
namespace quil::linux_platform {

/// How far off an element is of what its program says, and in which X window it is if that is not
/// its window's.
struct Displacement {
    bool isKnown = false;
    xcb_window_t popUp = XCB_WINDOW_NONE;
    /// Where the pop-up's corner seems to be, in the program's coordinates.
    Point popUpFrom = {};
    /// What is to be added to the program's coordinates.
    Point shift = {};
    /// The root pane by which the shift is measured, if it is, and the element of GTK that it
    /// fills, which it does not name as its parent.
    Reference pane = {}, filledByPane = {};
    /// The program's coordinates are those of the screen.
    bool isInPixels = false;
};

/// By the elements that it applies to, with all that is in them.
using Displacements = std::unordered_map<const ObservedElement*, Displacement>;

/// Those of the elements of a window, whose extents are in the program's coordinates yet.
Displacements displacementsIn(AccessibilityBus& bus, const LocatedWindow& window,
                              const std::vector<ObservedElement*>& elements);

/// What can be known now of a displacement: panes may have been put right meanwhile.
Displacement currentDisplacement(AccessibilityBus& bus, const Displacement& displacement);

/// Extents in the program's coordinates as global screen coordinates. Nothing where that is not
/// known, or when the pop-up has gone.
std::optional<Rect> onScreen(const LocatedWindow& window, const Displacement& displacement,
                             const Rect& extents);

}  // namespace quil::linux_platform
