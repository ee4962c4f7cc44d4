#pragma once

#include <cstddef>
#include <vector>

#include "foundation/large_blocks.h"

namespace kvx::zelvo {

template <class T>
struct large_page_allocator {
    using value_type = T;

    large_page_allocator() = default;
    template <class Other>
    large_page_allocator(const large_page_allocator<Other>&) noexcept {}
    T* allocate(std::size_t n) { return make_scratch<T>(n).release(); }
    void deallocate(T* block, std::size_t) noexcept { free_scratch()(block); }
    bool operator==(const large_page_allocator&) const = default;
};

/// A vector that is on large pages when it gets long.
template <class T>
using large_vector = std::vector<T, large_page_allocator<T>>;

} // namespace kvx::zelvo
