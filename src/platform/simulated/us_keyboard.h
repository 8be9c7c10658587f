#pragma once

#include <cstdint>
#include <string_view>

namespace quil::simulated {

/// A key of a US keyboard, and whether Shift is held with it.
struct UsKey {
    std::int64_t code = 0;
    bool shifted = false;
};

/// The key that types the character; code 0 when the keyboard lacks it. A line feed is the Return
/// key, a tab the Tab key.
UsKey usKeyFor(std::string_view character);

}  // namespace quil::simulated
