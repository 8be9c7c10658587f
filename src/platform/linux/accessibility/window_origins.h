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

/// Puts elements on the screen: their programs tell places in coordinates of their own. An element
/// whose place cannot be known gets extents without an area.
class WindowOrigins {
  public:
    /// Both outlive this.
    WindowOrigins(AccessibilityBus& bus, X11Display& display) : bus_(bus), display_(display) {}

    /// Places all elements of a tree, whose extents are as the programs told them, and remembers
    /// which windows they are in.
    void locateTree(const std::vector<ObservedElement*>& elements);
    /// Places an element that was read by itself.
    void locate(const Reference& element, Facts& facts);

  private:
    /// A window of a program on the screen.
    struct Window {
        CoordinateMap map;
        bool hasWholeScales = false;
        bool isWithinWindow = false;
        bool isSwing = false;
        /// Those in which elements are placed differently; empty when they make no difference.
        std::vector<PopUp> popUps;
    };
    /// Where an element is that its program places as if it were elsewhere: in an X window of its
    /// own, or just somewhere else.
    struct Displacement {
        bool isKnown = false;
        xcb_window_t popUp = XCB_WINDOW_NONE;
        /// Where the pop-up's corner seems to be, in the program's coordinates.
        Point popUpFrom;
        /// What is to be added to the program's coordinates.
        Point shift;
    };
    /// By the elements that, with all that is in them, take it.
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
    static std::optional<Rect> onScreen(const Window& window, const Anchor& anchor,
                                        const Rect& extents);

    AccessibilityBus& bus_;
    X11Display& display_;
    std::unordered_map<Reference, Anchor, ReferenceHash> anchors_;
};

}  // namespace quil::linux_platform
