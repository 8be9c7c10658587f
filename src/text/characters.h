#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Text is UTF-8 throughout. A character is what a user perceives as one: an extended grapheme
/// cluster (Unicode Standard Annex 29), so that a flag, a joined family or a letter with its
/// accents counts once, and so does a carriage return with its line feed.
namespace quil {

/// The number of characters. Broken UTF-8 is tolerated: each byte that is part of no character
/// counts as one.
std::int64_t characterCount(std::string_view text);

/// The first `count` characters, or the whole text when it has no more; empty for a count below 1.
std::string_view characterPrefix(std::string_view text, std::int64_t count);

/// Whether the text holds nothing but spaces (Unicode category Zs) and tabs. Line breaks are not
/// blank.
bool isBlank(std::string_view text);

/// Whether a control or format character (Unicode categories Cc and Cf) is in the text.
bool hasControlCharacter(std::string_view text);

/// Whether a UTF-16 code unit is the first half of a character beyond the basic plane.
constexpr bool isHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
/// Whether it is the second half of one.
constexpr bool isLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// The text in UTF-16 code units. Bytes that are not UTF-8 become U+FFFD.
std::u16string toUtf16(std::string_view text);

/// The text in UTF-8. A surrogate without its partner becomes U+FFFD.
std::string toUtf8(std::u16string_view units);

/// The UTF-8 text of bytes in Latin-1 (ISO 8859-1).
std::string latin1ToUtf8(std::string_view bytes);

/// The text with every byte that is not part of valid UTF-8 replaced by U+FFFD.
std::string validUtf8(std::string_view text);

/// The text in lower case, letter by letter, whatever the locale.
std::string lowercased(std::string_view text);

}  // namespace quil
