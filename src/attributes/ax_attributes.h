#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/accessibility.h"

/// Failure-tolerant readers of other applications' elements. Each asks one element for one thing;
/// an error code, a missing value and a value of another type all read as absent (an empty list
/// for the list readers).
namespace quil {

/// An element's rectangle in whole points, in global screen coordinates.
struct AxBounds {
    std::int64_t x = 0;
    std::int64_t y = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;
    bool operator==(const AxBounds&) const = default;
};

/// The most characters that a text field of a recorded element keeps.
inline constexpr std::int64_t AX_FIELD_LIMIT = 500;

/// Any attribute, of whatever type it is.
std::optional<Value> axAttribute(Accessibility& accessibility, const ElementRef& element,
                                 std::string_view attribute);

/// A string attribute, unchanged; an empty string is a string.
std::optional<std::string> axString(Accessibility& accessibility, const ElementRef& element,
                                    std::string_view attribute);

/// The element's children in the platform's order.
std::vector<ElementRef> axChildren(Accessibility& accessibility, const ElementRef& element);

/// The application's focused window; its application element when it has none. Never null.
ElementRef axFocusedWindow(Accessibility& accessibility, std::int32_t pid);

/// An attribute that is a point (global screen coordinates) or a size (in points).
std::optional<Point> axPointAttribute(Accessibility& accessibility, const ElementRef& element,
                                      std::string_view attribute);
std::optional<Size> axSizeAttribute(Accessibility& accessibility, const ElementRef& element,
                                    std::string_view attribute);

/// Position and size rounded to whole points, halves away from zero. Absent when either is, or when
/// a coordinate is not finite or beyond 64 bits.
std::optional<AxBounds> axBounds(Accessibility& accessibility, const ElementRef& element);

/// "AXValue" when it is a string, or a number in decimal (booleans are 1 and 0). Not clipped.
std::optional<std::string> axValueString(Accessibility& accessibility, const ElementRef& element);

/// The first AX_FIELD_LIMIT characters; absent for an absent or an empty text.
std::optional<std::string> clipAxField(const std::optional<std::string>& text);

/// "AXEnabled".
std::optional<bool> axEnabled(Accessibility& accessibility, const ElementRef& element);

/// The names of the element's actions in the platform's order.
std::vector<std::string> axActionNames(Accessibility& accessibility, const ElementRef& element);

}  // namespace quil
