#pragma once

#include <cstdint>

/// Key symbols, as numbered by X11's keysymdef.h.
namespace quil::linux_platform {

inline constexpr std::uint32_t kSymbolBackSpace = 0xFF08;
inline constexpr std::uint32_t kSymbolTab = 0xFF09;
inline constexpr std::uint32_t kSymbolReturn = 0xFF0D;
inline constexpr std::uint32_t kSymbolEscape = 0xFF1B;
inline constexpr std::uint32_t kSymbolDelete = 0xFFFF;
inline constexpr std::uint32_t kSymbolNumLock = 0xFF7F;
inline constexpr std::uint32_t kSymbolShiftL = 0xFFE1;
inline constexpr std::uint32_t kSymbolShiftR = 0xFFE2;
inline constexpr std::uint32_t kSymbolControlL = 0xFFE3;
inline constexpr std::uint32_t kSymbolControlR = 0xFFE4;
inline constexpr std::uint32_t kSymbolMetaL = 0xFFE7;
inline constexpr std::uint32_t kSymbolMetaR = 0xFFE8;
inline constexpr std::uint32_t kSymbolAltL = 0xFFE9;
inline constexpr std::uint32_t kSymbolAltR = 0xFFEA;
inline constexpr std::uint32_t kSymbolSuperL = 0xFFEB;
inline constexpr std::uint32_t kSymbolSuperR = 0xFFEC;
inline constexpr std::uint32_t kSymbolHyperL = 0xFFED;
inline constexpr std::uint32_t kSymbolHyperR = 0xFFEE;

/// The keypad's symbols, which stand for characters too.
inline constexpr std::uint32_t kFirstKeypadSymbol = 0xFF80;
inline constexpr std::uint32_t kLastKeypadSymbol = 0xFFBD;

/// Added to a character's code; characters below 256 are symbols as they are.
inline constexpr std::uint32_t kUnicodeSymbolBase = 0x01000000;

}  // namespace quil::linux_platform
