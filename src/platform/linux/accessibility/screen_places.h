#pragma once

#include <optional>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// Puts elements of programs that know places within their windows only (GTK 4) on the screen: the
/// X server says where the window is.
class ScreenPlaces {
  public:
    /// Both outlive this.
    ScreenPlaces(AccessibilityBus& bus, X11Display& display) : bus_(bus), display_(display) {}

    /// Whether the element's extents are in its window's coordinates.
    bool isWithinWindow(const Reference& element) {
        return bus_.introducedProgram(element.busName).placesWithinWindow();
    }
    /// The window that an element is in, or is: the application's child among its ancestors. The
    /// element itself when it has none.
    Reference windowOf(Reference element);
    /// Where the window's own coordinates begin on the screen. Nothing when it is not found there.
    std::optional<Point> origin(const Reference& window);

    /// Moves extents from a window's coordinates to the screen's; without an origin, nowhere.
    static void place(Facts& facts, const std::optional<Point>& origin);

  private:
    AccessibilityBus& bus_;
    X11Display& display_;
};

}  // namespace quil::linux_platform
