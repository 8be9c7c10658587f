#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quil {

/// The integer that a JSON number stands for, judged as written: "7.0", "70e-1" and "-0" are
/// integers, "7.00000000000000000000001" and "1e-400" are not, although doubles would round them
/// to one. Nothing for a fraction, and for what is outside the signed 64-bit range. The text is a
/// JSON number.
std::optional<std::int64_t> exactInteger(std::string_view number);

}  // namespace quil
