#include <kvx/ref_counted.h>

#include <cstdlib>

#include "foundation/large_blocks.h"

namespace kvx {

// Of the C library rather than operator new, which has no form that gives zeroed pages untouched.

std::byte* __vector_num_alloc(std::uint64_t bytes) noexcept {
    void* const block = std::malloc(bytes);
    zelvo::prefer_large_pages(block, bytes); // not for zeros, which may stay untouched
    return static_cast<std::byte*>(block);
}

std::byte* __vector_num_alloc_zeros(std::uint64_t bytes) noexcept {
    return static_cast<std::byte*>(std::calloc(bytes, 1));
}

void __vector_num_free(std::byte* raw_block) noexcept {
    std::free(raw_block);
}

} // namespace kvx
