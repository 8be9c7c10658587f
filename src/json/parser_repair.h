#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quil {

/// The parser refuses two things that are valid JSON: numbers beyond the range of a double, and
/// escapes of half a character (a surrogate without its partner). The text with the largest double
/// and U+FFFD instead; nothing when it has neither. Other text may pass, or come out as no JSON
/// either.
std::optional<std::string> repairForParser(std::string_view text);

}  // namespace quil
