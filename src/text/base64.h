#pragma once

#include <string>
#include <string_view>

namespace quil {

/// Appends the bytes in Base64: the standard alphabet, padded with "=", on one line.
void appendBase64(std::string& text, std::string_view bytes);

}  // namespace quil
