#include "json/parser_repair.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "text/characters.h"

namespace quil {
namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::size_t digitsAt(std::string_view text, std::size_t start) {
    std::size_t end = start;
    while (end < text.size() && isDigit(text[end])) ++end;
    return end - start;
}

/// A number without its sign, as JSON writes it.
struct Literal {
    std::size_t length = 0;  // 0: the text begins with none
    bool isTooLarge = false;
};

Literal readLiteral(std::string_view text) {
    const std::size_t whole = digitsAt(text, 0);
    if (whole == 0 || (whole > 1 && text[0] == '0')) return {};
    std::size_t end = whole;
    if (end < text.size() && text[end] == '.') {
        const std::size_t fraction = digitsAt(text, end + 1);
        if (fraction == 0) return {};
        end += 1 + fraction;
    }
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        ++end;
        if (end < text.size() && (text[end] == '-' || text[end] == '+')) ++end;
        const std::size_t exponent = digitsAt(text, end);
        if (exponent == 0) return {};
        end += exponent;
    }
    // Not from_chars, which the Mac's library has for integers only.
    const std::string literal(text.substr(0, end));
    return {end, std::isinf(std::strtod(literal.c_str(), nullptr))};
}

/// The UTF-16 unit that an escape at the head of the text stands for; nothing when there is none.
std::optional<char16_t> escapedUnit(std::string_view text) {
    constexpr std::size_t kLength = 6;
    if (text.size() < kLength || !text.starts_with("\\u")) return {};
    std::uint16_t unit = 0;
    const char* const end = text.data() + kLength;
    if (std::from_chars(text.data() + 2, end, unit, 16).ptr != end) return {};
    return static_cast<char16_t>(unit);
}

/// How a piece of the text is to be written.
struct Piece {
    std::size_t length = 1;
    std::string_view replacement = {};  // empty: as it is
};

/// The escape at the head of the text, the two of a pair together.
Piece readEscape(std::string_view text) {
    const auto unit = escapedUnit(text);
    if (!unit) return {2};
    if (isHighSurrogate(*unit)) {
        const auto partner = escapedUnit(text.substr(6));
        if (partner && isLowSurrogate(*partner)) return {12};
    }
    if (isHighSurrogate(*unit) || isLowSurrogate(*unit)) return {6, "\\ufffd"};
    return {6};
}

}  // namespace

std::optional<std::string> repairForParser(std::string_view text) {
    std::string result;
    bool changed = false;
    bool inString = false;
    for (std::size_t i = 0; i < text.size();) {
        const char c = text[i];
        Piece piece;
        if (c == '"') {
            inString = !inString;
        } else if (inString && c == '\\') {
            piece = readEscape(text.substr(i));
        } else if (!inString && isDigit(c)) {
            const Literal literal = readLiteral(text.substr(i));
            if (literal.length == 0) return {};  // no JSON
            piece.length = literal.length;
            if (literal.isTooLarge) piece.replacement = "1.7976931348623157e308";
        }
        changed = changed || !piece.replacement.empty();
        result += piece.replacement.empty() ? text.substr(i, piece.length) : piece.replacement;
        i += piece.length;
    }
    if (!changed) return {};
    return result;
}

}  // namespace quil
