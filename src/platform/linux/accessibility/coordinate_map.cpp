#include "platform/linux/accessibility/coordinate_map.h"

#include <algorithm>
#include <cmath>

namespace quil::linux_platform {
namespace {

constexpr double kSmallestScale = 0.5;
constexpr double kLargestScale = 8;
/// Scales that people choose are multiples of this; others follow from the sizes.
constexpr double kScaleStep = 0.25;

/// Units by which toolkits round sizes.
constexpr double kSizeTolerance = 1;

/// Less alike than this, two sizes are not those of the same window.
constexpr double kMinimumSimilarity = 0.5;

Size sizeOf(const Rect& rect) {
    return {rect.width, rect.height};
}

bool isScaled(Size units, Size pixels, double scale) {
    return std::abs(pixels.width / scale - units.width) <= kSizeTolerance &&
           std::abs(pixels.height / scale - units.height) <= kSizeTolerance;
}

/// 1 for equal sizes; what both cover, compared with what either covers.
double similarity(Size a, Size b) {
    return std::min(a.width, b.width) * std::min(a.height, b.height) /
           (std::max(a.width, b.width) * std::max(a.height, b.height));
}

/// The scale at which the sizes are most alike.
std::optional<double> likelyScale(Size units, Size pixels, bool isWhole) {
    double best = 0;
    double bestSimilarity = kMinimumSimilarity;
    const double step = isWhole ? 1 : kScaleStep;
    const int steps = static_cast<int>((kLargestScale - 1) / step);
    for (int i = 0; i <= steps; ++i) {
        const double scale = 1 + i * step;
        const double alike = similarity({units.width * scale, units.height * scale}, pixels);
        if (alike <= bestSimilarity) continue;
        bestSimilarity = alike;
        best = scale;
    }
    return best > 0 ? std::optional(best) : std::nullopt;
}

/// Toolkits with whole scales cut fractions off the window's position.
Point unitsOf(Point pixels, double scale) {
    return {std::trunc(pixels.x / scale), std::trunc(pixels.y / scale)};
}

/// A toolkit that begins to count inside its window, and leaves out borders that it draws there: as
/// wide on all sides.
std::optional<WindowFit> fitWithin(const ToolkitWindow& window, const X11Window& onScreen) {
    const Size units = sizeOf(window.extents);
    std::optional<WindowFit> best;
    double leastBorder = 0;
    for (const Rect& rect : {onScreen.frame, onScreen.windowRect()}) {
        const auto scale = likelyScale(units, sizeOf(rect), window.hasWholeScales);
        if (!scale) continue;
        const Size rest{rect.width - units.width * *scale, rect.height - units.height * *scale};
        const bool isBorder = std::abs(rest.width - rest.height) <= 2 * *scale &&
                              std::min(rest.width, rest.height) >= -*scale;
        if (!isBorder || (best && rest.width >= leastBorder)) continue;
        leastBorder = rest.width;
        const Point inset{std::max(0.0, std::floor(rest.width / 2)),
                          std::max(0.0, std::floor(rest.height / 2))};
        best = WindowFit{
            {{window.extents.x, window.extents.y}, {rect.x + inset.x, rect.y + inset.y}, *scale},
            true,
            false};
    }
    return best;
}

bool isAt(const CoordinateMap& map, const Rect& extents) {
    return std::abs(extents.x * map.scale - map.to.x) <= 2 * map.scale &&
           std::abs(extents.y * map.scale - map.to.y) <= 2 * map.scale;
}

}  // namespace

Rect CoordinateMap::onScreen(const Rect& extents) const {
    return {to.x + (extents.x - from.x) * scale, to.y + (extents.y - from.y) * scale,
            extents.width * scale, extents.height * scale};
}

std::optional<double> exactScale(Size units, Size pixels, bool isWhole) {
    if (units.width <= 0 || units.height <= 0) return {};
    if (isScaled(units, pixels, 1)) return 1;
    const double step = isWhole ? 1 : kScaleStep;
    const double first = isWhole ? 1 : kSmallestScale;
    const int steps = static_cast<int>((kLargestScale - first) / step);
    for (int i = 0; i <= steps; ++i) {
        const double scale = first + i * step;
        if (isScaled(units, pixels, scale)) return scale;
    }
    if (isWhole) return {};
    // The longer side is rounded less.
    const double ratio =
        units.width > units.height ? pixels.width / units.width : pixels.height / units.height;
    const bool isPlausible = ratio >= kSmallestScale && ratio <= kLargestScale;
    return isPlausible && isScaled(units, pixels, ratio) ? std::optional(ratio) : std::nullopt;
}

std::optional<WindowFit> fitWindow(const ToolkitWindow& window, const X11Window& onScreen) {
    const Size units = sizeOf(window.extents);
    if (units.width <= 0 || units.height <= 0) return {};
    if (window.isWithinWindow) return fitWithin(window, onScreen);
    const Rect outer = onScreen.windowRect();
    for (const Rect& rect : {onScreen.frame, outer}) {
        const auto scale = exactScale(units, sizeOf(rect), window.hasWholeScales);
        if (!scale) continue;
        WindowFit fit{
            {{window.extents.x, window.extents.y}, {rect.x, rect.y}, *scale}, true, false};
        fit.hasPosition = isAt(fit.map, window.extents);
        return fit;
    }
    const auto scale = likelyScale(units, sizeOf(outer), window.hasWholeScales);
    if (!scale) return {};
    const Point corner{outer.x, outer.y};
    return WindowFit{{unitsOf(corner, *scale), corner, *scale}, false, false};
}

CoordinateMap mapInPopUp(const CoordinateMap& map, bool hasWholeScales, const Rect& popUp) {
    const Point corner{popUp.x, popUp.y};
    if (hasWholeScales) return {unitsOf(corner, map.scale), corner, map.scale};
    return {{std::round(map.from.x + (corner.x - map.to.x) / map.scale),
             std::round(map.from.y + (corner.y - map.to.y) / map.scale)},
            corner,
            map.scale};
}

}  // namespace quil::linux_platform
