#pragma once

#include <optional>

#include "platform/geometry.h"
#include "platform/linux/x11/windows/windows.h"

/// Toolkits count in units of their own: pixels, or as many pixels as their scale says; from the
/// corner of the screen, of a monitor or of the window; with or without what surrounds the window's
/// content. The geometry of the X window says what their numbers mean.
namespace quil::linux_platform {

/// How coordinates of a toolkit become global screen coordinates, in one X window.
struct CoordinateMap {
    /// The same point in the toolkit's coordinates and on the screen.
    Point from;
    Point to;
    /// Pixels of one unit.
    double scale = 1;

    Rect onScreen(const Rect& extents) const;
};

/// A toolkit's window as the toolkit describes it.
struct ToolkitWindow {
    /// The window, or what fills it, in the toolkit's units.
    Rect extents;
    /// The toolkit has whole scales only.
    bool hasWholeScales = false;
    /// Coordinates begin in the window, not on the screen.
    bool isWithinWindow = false;
};

/// How many pixels a unit is when what is so large in units is that large in pixels, give or take a
/// unit for rounding. Nothing when no scale makes both sides fit.
std::optional<double> exactScale(Size units, Size pixels, bool isWhole);

/// How a toolkit's window lies on an X window.
struct WindowFit {
    CoordinateMap map;
    /// The sizes agree. Otherwise the toolkit counts the decorations in, or something of the kind.
    bool hasSize = false;
    /// The positions agree, too: a toolkit with screen coordinates gives those of the X window.
    bool hasPosition = false;
};
/// Nothing when the two cannot be the same window, or when it cannot be known where the toolkit's
/// coordinates begin.
std::optional<WindowFit> fitWindow(const ToolkitWindow& window, const X11Window& onScreen);

/// The map in another X window of the same program, such as a menu's, for a toolkit that counts
/// from the corner of the screen: it rounds where that window is, too.
CoordinateMap mapInPopUp(const CoordinateMap& map, bool hasWholeScales, const Rect& popUp);

}  // namespace quil::linux_platform
