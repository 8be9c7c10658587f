#include "json/json.h"

#include <charconv>
#include <cmath>

namespace quil {
namespace {

/// The text with every number literal that overflows a double replaced by the largest double. The
/// parser refuses such literals although they are valid JSON.
std::string withoutOverflows(std::string_view text) {
    std::string result;
    bool inString = false;
    for (std::size_t i = 0; i < text.size();) {
        const char c = text[i];
        if (inString || c == '"') {
            const std::size_t length = inString && c == '\\' ? 2 : 1;
            if (c == '"') inString = !inString;
            result.append(text.substr(i, length));
            i += length;
            continue;
        }
        if (c < '0' || c > '9') {
            result.push_back(c);
            ++i;
            continue;
        }
        const std::size_t end = std::min(text.find_first_not_of("0123456789.eE+-", i), text.size());
        const std::string_view literal = text.substr(i, end - i);
        double value = 0;
        const auto read = std::from_chars(literal.data(), literal.data() + literal.size(), value);
        const bool tooLarge = read.ec == std::errc::result_out_of_range &&
                              literal.find("e-") == literal.npos &&
                              literal.find("E-") == literal.npos;
        result.append(tooLarge ? "1.7976931348623157e308" : literal);
        i = end;
    }
    return result;
}

Json parse(std::string_view text) {
    return Json::parse(text, nullptr, /*allow_exceptions=*/false);
}

}  // namespace

std::optional<Json> parseJson(std::string_view text) {
    Json value = parse(text);
    if (value.is_discarded()) value = parse(withoutOverflows(text));
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
    if (value.is_number_float()) return Value(value.get<double>()).integer();
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
