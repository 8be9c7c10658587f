#pragma once

#include <cstdint>

/// Keysyms, as numbered by X11's keysymdef.h.
namespace quil::linux_platform {

inline constexpr std::uint32_t kKeysymBackSpace = 0xFF08;
inline constexpr std::uint32_t kKeysymTab = 0xFF09;
inline constexpr std::uint32_t kKeysymReturn = 0xFF0D;
inline constexpr std::uint32_t kKeysymEscape = 0xFF1B;
inline constexpr std::uint32_t kKeysymDelete = 0xFFFF;
inline constexpr std::uint32_t kKeysymNumLock = 0xFF7F;
inline constexpr std::uint32_t kKeysymShiftL = 0xFFE1;
inline constexpr std::uint32_t kKeysymShiftR = 0xFFE2;
inline constexpr std::uint32_t kKeysymControlL = 0xFFE3;
inline constexpr std::uint32_t kKeysymControlR = 0xFFE4;
inline constexpr std::uint32_t kKeysymMetaL = 0xFFE7;
inline constexpr std::uint32_t kKeysymMetaR = 0xFFE8;
inline constexpr std::uint32_t kKeysymAltL = 0xFFE9;
inline constexpr std::uint32_t kKeysymAltR = 0xFFEA;
inline constexpr std::uint32_t kKeysymSuperL = 0xFFEB;
inline constexpr std::uint32_t kKeysymSuperR = 0xFFEC;
inline constexpr std::uint32_t kKeysymHyperL = 0xFFED;
inline constexpr std::uint32_t kKeysymHyperR = 0xFFEE;

/// The keypad's keysyms, which stand for characters too.
inline constexpr std::uint32_t kFirstKeypadKeysym = 0xFF80;
inline constexpr std::uint32_t kLastKeypadKeysym = 0xFFBD;

/// Added to a character's code; characters below 256 are keysyms as they are.
inline constexpr std::uint32_t kUnicodeKeysymBase = 0x01000000;

}  // namespace quil::linux_platform
