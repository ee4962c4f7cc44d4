#include <kvx/ref_counted.h>

#include <cstdlib>

namespace kvx {

// Of the C library rather than operator new, which has no form that gives zeroed pages untouched.

std::byte* __vector_num_alloc(std::uint64_t bytes) noexcept {
    return static_cast<std::byte*>(std::malloc(bytes));
}

std::byte* __vector_num_alloc_zeros(std::uint64_t bytes) noexcept {
    return static_cast<std::byte*>(std::calloc(bytes, 1));
}

void __vector_num_free(std::byte* raw_block) noexcept {
    std::free(raw_block);
}

} // namespace kvx
