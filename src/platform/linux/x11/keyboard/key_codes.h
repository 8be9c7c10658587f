#pragma once

#include <cstdint>
#include <optional>

/// Virtual key codes (the physical keys of a Mac keyboard, as numbered by the Carbon event
/// manager's Events.h) and the key codes of an X server on Linux (evdev's number plus 8, as given
/// by linux/input-event-codes.h and the "evdev" key code names of xkeyboard-config).
///
/// Keys that a Mac keyboard does not have (Pause, Print Screen, Scroll Lock, media keys …) are
/// virtual key codes too, beyond the Mac's range: `kForeignKeyBase` plus the X key code. So every
/// key that can be pressed here has a number that can be posted again.
namespace quil::linux_platform {

/// Foreign keys are this plus an X key code, 8 to 255.
inline constexpr std::uint16_t kForeignKeyBase = 0x200;

/// The X key code of the key; nothing for a number that stands for no key here (Fn, which X
/// servers cannot see; the power key, which would end the user's session; undefined numbers).
std::optional<std::uint8_t> xKeyCode(std::uint16_t virtualKeyCode);

/// The virtual key code of the key. Every X key code has one; where two X key codes stand for the
/// same Mac key (Insert and Help, the two keypad commas) both give that key.
std::uint16_t virtualKeyCode(std::uint8_t xKeyCode);

}  // namespace quil::linux_platform
