#include "json/exact_integer.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace quil {
namespace {

/// The digits of 2^63.
constexpr std::int64_t kMaximumDigits = 19;

/// The exponent as written; one too large to hold is as good as one that no number makes up for.
std::int64_t readExponent(std::string_view text) {
    constexpr std::int64_t kHuge = std::int64_t{1} << 62;
    const bool isNegative = text.starts_with('-');
    if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
    std::int64_t size = 0;
    const bool fits =
        std::from_chars(text.data(), text.data() + text.size(), size).ec == std::errc();
    size = fits ? std::min(size, kHuge) : kHuge;
    return isNegative ? -size : size;
}

}  // namespace

std::optional<std::int64_t> exactInteger(std::string_view number) {
    const std::size_t mark = number.find_first_of("eE");
    std::int64_t exponent = mark == number.npos ? 0 : readExponent(number.substr(mark + 1));
    std::string_view written = number.substr(0, mark);
    const bool isNegative = written.starts_with('-');
    if (isNegative) written.remove_prefix(1);

    std::string digits(written);
    if (const std::size_t point = digits.find('.'); point != digits.npos) {
        exponent -= static_cast<std::int64_t>(digits.size() - point - 1);
        digits.erase(point, 1);
    }
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    if (digits.empty()) return 0;
    const std::size_t kept = digits.find_last_not_of('0') + 1;
    exponent += static_cast<std::int64_t>(digits.size() - kept);
    digits.resize(kept);
    if (exponent < 0) return {};
    if (exponent > kMaximumDigits - static_cast<std::int64_t>(kept)) return {};
    digits.append(static_cast<std::size_t>(exponent), '0');
    if (isNegative) digits.insert(0, 1, '-');

    std::int64_t value = 0;
    const char* const end = digits.data() + digits.size();
    if (std::from_chars(digits.data(), end, value).ec != std::errc()) return {};
    return value;
}

}  // namespace quil
