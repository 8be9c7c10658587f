#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quil {

/// A prefix code as deflate writes it (RFC 1951, 3.2.2).
struct HuffmanCode {
    /// Bits of each symbol's code; 0 for a symbol that does not occur.
    std::vector<std::uint8_t> lengths;
    /// The codes, their first bit lowest.
    std::vector<std::uint16_t> codes;
};

/// A complete code for symbols that occur so often, nowhere longer than `maximumLength`. It has at
/// least two symbols, as decoders want it, even if fewer occur.
HuffmanCode huffmanCode(std::span<const std::uint32_t> frequencies, unsigned maximumLength);

}  // namespace quil
