#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace quil {

/// Stores eight bytes, the lowest one first.
inline void storeLittleEndian(std::uint8_t* out, std::uint64_t bytes) {
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(out, &bytes, sizeof bytes);
    } else {
        for (unsigned i = 0; i < sizeof bytes; ++i) {
            out[i] = static_cast<std::uint8_t>(bytes >> (8 * i));
        }
    }
}

}  // namespace quil
