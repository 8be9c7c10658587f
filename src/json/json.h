#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>

#include "platform/value.h"

namespace quil {

using Json = nlohmann::json;

/// The JSON value of a text; nothing when it is not JSON (comments and trailing text included).
/// A number whose value, as written, is an integer in the signed 64-bit range is held as an integer
/// (3.0 and 30e-1, too), another as a double. Numbers too large for a double read as the largest
/// one, escapes of half a character as U+FFFD.
std::optional<Json> parseJson(std::string_view text);

/// The value, of `parseJson`, when it is a number that is exactly an integer in the signed 64-bit
/// range, however it was written (3 and 3.0 both give 3). A boolean is not a number.
std::optional<std::int64_t> jsonInteger(const Json& value);

/// A platform value as JSON. What JSON has no word for (elements, points, opaque values) becomes
/// null.
Json jsonFromValue(const Value& value);

/// Sets the member when there is a value; an absent one leaves the key out.
template <typename T>
void setOptional(Json& object, const char* key, const std::optional<T>& value) {
    if (value) object[key] = *value;
}

}  // namespace quil
