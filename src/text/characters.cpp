#include "text/characters.h"

#include <utf8proc.h>

#include <algorithm>
#include <limits>
#include <optional>

namespace quil {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
/// The one letter whose lower case is two code points.
constexpr char32_t kDottedCapitalI = 0x130;

struct CodePoint {
    std::optional<char32_t> value;  // nothing for a byte that is not UTF-8
    std::size_t length = 1;
};

CodePoint codePointAt(std::string_view text, std::size_t position) {
    utf8proc_int32_t value = -1;
    const auto remaining = std::min<std::size_t>(text.size() - position, 4);
    const utf8proc_ssize_t length =
        utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()) + position,
                         static_cast<utf8proc_ssize_t>(remaining), &value);
    if (length <= 0) return {};
    return {static_cast<char32_t>(value), static_cast<std::size_t>(length)};
}

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Where the first `limit` characters end, and how many characters that are.
struct Extent {
    std::size_t bytes = 0;
    std::int64_t characters = 0;
};

Extent asciiExtent(std::string_view text, std::int64_t limit) {
    Extent extent;
    while (extent.bytes < text.size() && extent.characters < limit) {
        const bool pair = text.substr(extent.bytes, 2) == "\r\n";
        extent.bytes += pair ? 2 : 1;
        ++extent.characters;
    }
    return extent;
}

Extent extentOf(std::string_view text, std::int64_t limit) {
    if (isAscii(text)) return asciiExtent(text, limit);
    Extent extent;
    utf8proc_int32_t state = 0;
    std::optional<char32_t> previous;
    while (extent.bytes < text.size()) {
        const CodePoint current = codePointAt(text, extent.bytes);
        const bool starts =
            !previous || !current.value ||
            utf8proc_grapheme_break_stateful(static_cast<utf8proc_int32_t>(*previous),
                                             static_cast<utf8proc_int32_t>(*current.value), &state);
        if (starts) {
            if (extent.characters >= limit) break;
            ++extent.characters;
        }
        if (!current.value) state = 0;
        previous = current.value;
        extent.bytes += current.length;
    }
    return extent;
}

void appendUtf8(std::string& text, char32_t value) {
    utf8proc_uint8_t bytes[4];
    const auto length = utf8proc_encode_char(static_cast<utf8proc_int32_t>(value), bytes);
    text.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
}

}  // namespace

std::int64_t characterCount(std::string_view text) {
    return extentOf(text, std::numeric_limits<std::int64_t>::max()).characters;
}

std::string_view characterPrefix(std::string_view text, std::int64_t count) {
    if (count < 1) return {};
    // No text has more characters than bytes.
    if (text.size() <= static_cast<std::uint64_t>(count)) return text;
    return text.substr(0, extentOf(text, count).bytes);
}

bool isBlank(std::string_view text) {
    for (std::size_t position = 0; position < text.size();) {
        const CodePoint current = codePointAt(text, position);
        if (!current.value) return false;
        const bool space = *current.value == '\t' ||
                           utf8proc_category(static_cast<utf8proc_int32_t>(*current.value)) ==
                               UTF8PROC_CATEGORY_ZS;
        if (!space) return false;
        position += current.length;
    }
    return true;
}

bool hasControlCharacter(std::string_view text) {
    for (std::size_t position = 0; position < text.size();) {
        const CodePoint current = codePointAt(text, position);
        if (current.value) {
            const auto category = utf8proc_category(static_cast<utf8proc_int32_t>(*current.value));
            if (category == UTF8PROC_CATEGORY_CC || category == UTF8PROC_CATEGORY_CF) return true;
        }
        position += current.length;
    }
    return false;
}

std::u16string toUtf16(std::string_view text) {
    std::u16string units;
    units.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const CodePoint current = codePointAt(text, position);
        const char32_t value = current.value.value_or(kReplacement);
        if (value >= 0x10000) {
            units.push_back(static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10)));
            units.push_back(static_cast<char16_t>(0xDC00 + ((value - 0x10000) & 0x3FF)));
        } else {
            units.push_back(static_cast<char16_t>(value));
        }
        position += current.length;
    }
    return units;
}

std::string toUtf8(std::u16string_view units) {
    std::string text;
    text.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i];
        if (isHighSurrogate(unit) && i + 1 < units.size() && isLowSurrogate(units[i + 1])) {
            const char32_t high = unit - char32_t{0xD800};
            const char32_t low = units[++i] - char32_t{0xDC00};
            appendUtf8(text, 0x10000 + (high << 10) + low);
        } else {
            appendUtf8(text, isHighSurrogate(unit) || isLowSurrogate(unit) ? kReplacement : unit);
        }
    }
    return text;
}

std::string latin1ToUtf8(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const char byte : bytes) appendUtf8(text, static_cast<unsigned char>(byte));
    return text;
}

std::string validUtf8(std::string_view text) {
    if (isAscii(text)) return std::string(text);
    std::string valid;
    valid.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const CodePoint current = codePointAt(text, position);
        if (current.value) {
            valid.append(text.substr(position, current.length));
        } else {
            appendUtf8(valid, kReplacement);
        }
        position += current.length;
    }
    return valid;
}

std::string lowercased(std::string_view text) {
    std::string lower;
    lower.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const CodePoint current = codePointAt(text, position);
        if (current.value == kDottedCapitalI) {
            lower += "i\u0307";
        } else if (current.value) {
            appendUtf8(lower, static_cast<char32_t>(
                                  utf8proc_tolower(static_cast<utf8proc_int32_t>(*current.value))));
        } else {
            lower.append(text.substr(position, current.length));
        }
        position += current.length;
    }
    return lower;
}

}  // namespace quil
