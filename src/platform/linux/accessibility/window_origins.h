#pragma once

#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/linux/accessibility/coordinate_map.h"
#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/windows/pop_ups.h"

namespace quil::linux_platform {

struct ObservedElement;

/// Converts elements' extents, which programs give in coordinates of their own, to global screen
/// coordinates. An element whose position cannot be known gets extents without an area.
class WindowOrigins {
  public:
    /// Both outlive this.
    WindowOrigins(AccessibilityBus& bus, X11Display& display) : bus_(bus), display_(display) {}

    /// Converts the extents of all elements of a tree, and remembers which windows they are in.
    void locateTree(const std::vector<ObservedElement*>& elements);
    /// Converts those of an element that was read by itself.
    void locate(const Reference& element, Facts& facts);

  private:
    /// A window of a program on the screen.
    struct Window {
        CoordinateMap map;
        bool hasWholeScales = false;
        bool isWithinWindow = false;
        bool isSwing = false;
        /// Pop-ups whose elements have other coordinates; empty when there is no difference.
        std::vector<PopUp> popUps;
    };
    /// How far off an element is of what its program says, and in which X window it is if that is
    /// not its window's.
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
    /// What an element is in.
    struct Anchor {
        Reference window;
        std::optional<Displacement> displacement;
    };

    /// The window that an element is in, or is: the application's child among its ancestors. The
    /// element itself when it has none.
    Reference windowOf(Reference element);
    std::optional<Window> findWindow(const Reference& window, Facts facts);
    std::optional<WindowFit> fitOnScreen(X11Connection& connection, std::int32_t pid,
                                         const std::string& title, const ToolkitWindow& window);
    static Displacements popoverDisplacements(const Window& window,
                                              const std::vector<ObservedElement*>& elements);
    static Displacements menuDisplacements(const Window& window,
                                           const std::vector<ObservedElement*>& elements);
    static Displacement menuDisplacement(const Window& window, const ObservedElement& menu,
                                         const std::vector<ObservedElement*>& elements);
    Displacements paneDisplacements(const std::vector<ObservedElement*>& elements);
    static Displacement paneDisplacement(const Rect& extents, const Rect& filled);
    static Displacements documentDisplacements(const Window& window,
                                               const std::vector<ObservedElement*>& elements);
    Displacements displacements(const Window& window,
                                const std::vector<ObservedElement*>& elements);
    /// What can be known now of an anchor's displacement: panes may have been put right meanwhile.
    std::optional<Displacement> currentDisplacement(const Anchor& anchor);
    static std::optional<Rect> onScreen(const Window& window, const Anchor& anchor,
                                        const Rect& extents);

    AccessibilityBus& bus_;
    X11Display& display_;
    std::unordered_map<Reference, Anchor, ReferenceHash> anchors_;
};

}  // namespace quil::linux_platform
