#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace quil {

struct LargeBufferDeleter {
    void operator()(std::uint8_t* memory) const { std::free(memory); }
};

/// Memory for megabytes that are written once and soon freed.
using LargeBuffer = std::unique_ptr<std::uint8_t[], LargeBufferDeleter>;

/// `size` bytes of no particular content, in large pages where the system has them: to be given
/// memory page by page would take longer than to fill it. Throws std::bad_alloc.
LargeBuffer makeLargeBuffer(std::size_t size);

}  // namespace quil
