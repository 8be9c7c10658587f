#include "json/json.h"

#include "json/parsable.h"

namespace quil {
namespace {

Json parse(std::string_view text) {
    // The parser takes a NUL for the end of the text, whatever comes behind it.
    if (text.find('\0') != text.npos) return Json(Json::value_t::discarded);
    return Json::parse(text, nullptr, /*allow_exceptions=*/false);
}

}  // namespace

std::optional<Json> parseJson(std::string_view text) {
    Json value = parse(text);
    if (value.is_discarded()) {
        const auto readable = parsableJson(text);
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
