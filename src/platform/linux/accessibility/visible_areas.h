#pragma once

#include <functional>
#include <optional>
#include <unordered_map>

#include "platform/geometry.h"
#include "platform/linux/accessibility/observed_element.h"

namespace quil::linux_platform {

/// The part that is in both; without an area when there is none.
Rect intersection(const Rect& a, const Rect& b);

/// Which part of the screen an element can be seen in, as what it is scrolled in or listed by
/// leaves the rest of it out. Some toolkits (Qt) say that elements are showing which are scrolled
/// out of sight, or are listed by what is hidden. Elements have their extents on the screen
/// already.
class VisibleAreas {
  public:
    /// `isInPopUp` says whether a point is in one of the program's pop-ups.
    explicit VisibleAreas(std::function<bool(Point)> isInPopUp)
        : isInPopUp_(std::move(isInPopUp)) {}

    /// The area that what is around an element leaves it; nothing when that is all of the screen.
    std::optional<Rect> areaOf(const ObservedElement& element);

  private:
    /// What an element leaves to those in it.
    struct Inside {
        std::optional<Rect> area;
        /// Pages put their elements wherever they like, and browsers know which are to be seen.
        bool isPage = false;
    };
    const Inside& inside(const ObservedElement& element);

    std::function<bool(Point)> isInPopUp_;
    std::unordered_map<const ObservedElement*, Inside> inside_;
};

}  // namespace quil::linux_platform
