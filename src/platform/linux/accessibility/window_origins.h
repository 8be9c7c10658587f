#pragma once

#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/linux/accessibility/displacements.h"
#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Converts elements' extents, which programs give in coordinates of their own, to global screen
/// coordinates, and leaves out what is scrolled out of sight. An element whose position cannot be
/// known gets extents without an area.
class WindowOrigins {
  public:
    /// Both outlive this.
    WindowOrigins(AccessibilityBus& bus, X11Display& display) : bus_(bus), display_(display) {}

    /// Converts the extents of all elements of a tree, and remembers which windows they are in.
    void locateTree(const std::vector<ObservedElement*>& elements);
    /// Converts those of an element that was read by itself.
    void locate(const Reference& element, Facts& facts);

  private:
    /// What an element is in.
    struct Anchor {
        Reference window;
        Displacement displacement;
        /// The area in which the element can be seen, from the window's corner on the screen;
        /// nothing when all of it can.
        std::optional<Rect> visible;
    };

    /// The window that an element is in, or is: the application's child among its ancestors. The
    /// element itself when it has none.
    Reference windowOf(Reference element);
    /// Takes from the extents, which are those on the screen, what cannot be seen.
    void leaveOutHidden(const LocatedWindow& window, const std::vector<ObservedElement*>& elements);
    std::vector<PopUp> popUpsWith(const LocatedWindow& window);

    AccessibilityBus& bus_;
    X11Display& display_;
    std::unordered_map<Reference, Anchor, ReferenceHash> anchors_;
};

}  // namespace quil::linux_platform
