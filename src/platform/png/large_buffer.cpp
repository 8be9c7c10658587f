#include "platform/png/large_buffer.h"

#include <sys/mman.h>

#include <new>

namespace quil {
namespace {

constexpr std::size_t kLargePage = std::size_t{2} << 20;

}  // namespace

LargeBuffer makeLargeBuffer(std::size_t size) {
    const std::size_t rounded = (size + kLargePage - 1) / kLargePage * kLargePage;
    void* memory = size < kLargePage ? std::malloc(size) : std::aligned_alloc(kLargePage, rounded);
    if (!memory && size > 0) throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
    // The last page as well only if most of it is used. A system without large pages refuses.
    if (size >= kLargePage) {
        madvise(memory, (size + kLargePage / 2) / kLargePage * kLargePage, MADV_HUGEPAGE);
    }
#endif
    return LargeBuffer(static_cast<std::uint8_t*>(memory));
}

}  // namespace quil
