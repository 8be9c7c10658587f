#include "json/json.h"

#include <charconv>
#include <cmath>

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
    const std::size_t mantissa = end;
    bool negativeExponent = false;
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        ++end;
        negativeExponent = end < text.size() && text[end] == '-';
        if (end < text.size() && (text[end] == '-' || text[end] == '+')) ++end;
        const std::size_t exponent = digitsAt(text, end);
        if (exponent == 0) return {};
        end += exponent;
    }
    double value = 0;
    if (std::from_chars(text.data(), text.data() + end, value).ec == std::errc()) return {end};
    // Out of range, on one side or the other: the power of ten of the first digit tells which.
    const std::size_t first = text.substr(0, mantissa).find_first_of("123456789");
    const auto power = static_cast<double>(whole) - static_cast<double>(first);
    const std::size_t digits = text.substr(0, end).find_last_not_of("0123456789") + 1;
    double exponent = mantissa == end ? 0 : 1e300;  // stays when it has hundreds of digits
    if (mantissa != end) std::from_chars(text.data() + digits, text.data() + end, exponent);
    return {end, power + (negativeExponent ? -exponent : exponent) > 0};
}

/// The text with every number literal that overflows a double replaced by the largest double;
/// nothing when it has none. The parser refuses such literals although they are valid JSON.
std::optional<std::string> withoutOverflows(std::string_view text) {
    std::string result;
    bool overflows = false;
    bool inString = false;
    for (std::size_t i = 0; i < text.size();) {
        const char c = text[i];
        std::size_t length = 1;
        if (inString || c == '"') {
            if (inString && c == '\\') length = 2;
            if (c == '"') inString = !inString;
        } else if (isDigit(c)) {
            const Literal literal = readLiteral(text.substr(i));
            if (literal.length == 0) return {};  // no JSON
            length = literal.length;
            if (literal.isTooLarge) {
                overflows = true;
                result += "1.7976931348623157e308";
                i += length;
                continue;
            }
        }
        result += text.substr(i, length);
        i += length;
    }
    if (!overflows) return {};
    return result;
}

Json parse(std::string_view text) {
    return Json::parse(text, nullptr, /*allow_exceptions=*/false);
}

}  // namespace

std::optional<Json> parseJson(std::string_view text) {
    Json value = parse(text);
    if (value.is_discarded()) {
        const auto readable = withoutOverflows(text);
        if (!readable) return {};
        value = parse(*readable);
    }
    if (value.is_discarded()) return {};
    return value;
}

std::optional<std::int64_t> jsonInteger(const Json& value) {
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        if (number > static_cast<std::uint64_t>(INT64_MAX)) return {};
        return static_cast<std::int64_t>(number);
    }
    if (value.is_number_integer()) return value.get<std::int64_t>();
    if (value.is_number_float()) {
        const auto number = value.get<double>();
        // What was written below the range has been rounded to its lower end, too.
        if (number <= static_cast<double>(INT64_MIN)) return {};
        return Value(number).integer();
    }
    return {};
}

Json jsonFromValue(const Value& value) {
    if (const auto boolean = value.boolean()) return *boolean;
    if (const std::string* string = value.string()) return *string;
    if (const Value::List* list = value.list()) {
        Json result = Json::array();
        for (const Value& entry : *list) result.push_back(jsonFromValue(entry));
        return result;
    }
    if (const Value::Dictionary* dictionary = value.dictionary()) {
        Json result = Json::object();
        for (const auto& [key, member] : *dictionary) result[key] = jsonFromValue(member);
        return result;
    }
    if (value.isInteger()) return *value.integer();
    if (const auto number = value.number()) return *number;
    return nullptr;
}

}  // namespace quil
