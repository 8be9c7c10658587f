#pragma once

#include <cstdint>

/// Buttons of the core pointer as X11 numbers them, before the user's own order is applied. A line
/// of the wheel is a press and a release of one of the last four.
namespace quil::linux_platform {

inline constexpr std::uint8_t kLeftButton = 1;
inline constexpr std::uint8_t kMiddleButton = 2;
inline constexpr std::uint8_t kRightButton = 3;
inline constexpr std::uint8_t kWheelUp = 4;
inline constexpr std::uint8_t kWheelDown = 5;
inline constexpr std::uint8_t kWheelLeft = 6;
inline constexpr std::uint8_t kWheelRight = 7;

}  // namespace quil::linux_platform
