#include "text/base64.h"

#include <cstddef>
#include <cstdint>

namespace quil {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::uint32_t byteAt(std::string_view bytes, std::size_t at) {
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

}  // namespace

void appendBase64(std::string& text, std::string_view bytes) {
    const std::size_t begin = text.size();
    text.resize(begin + (bytes.size() + 2) / 3 * 4);
    char* out = text.data() + begin;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::uint32_t group =
            byteAt(bytes, at) << 16 | byteAt(bytes, at + 1) << 8 | byteAt(bytes, at + 2);
        for (int shift = 18; shift >= 0; shift -= 6) *out++ = kAlphabet[group >> shift & 63];
    }
    const std::size_t missing = (3 - bytes.size() % 3) % 3;
    text.replace(text.size() - missing, missing, missing, '=');
}

}  // namespace quil
