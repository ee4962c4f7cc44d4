#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

#include <kvx/dense_array.h>

#include "foundation/memory_guard.h"

namespace kvx::zelvo {

/// Advises the system to back a block that is soon written as a whole by large pages: the first
/// touch of small ones costs more than most work on them.
inline void prefer_large_pages([[maybe_unused]] void* block,
                               [[maybe_unused]] std::uint64_t bytes) noexcept {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t page = std::uintptr_t{1} << 21;
    if (!block || bytes < 2 * page) return;
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t skipped = (page - address % page) % page;
    const std::uintptr_t length = (bytes - skipped) / page * page;
    madvise(static_cast<std::byte*>(block) + skipped, length, MADV_HUGEPAGE);
#endif
}

/// Fetches memory that is read soon; the address need not be one that may be read.
inline void prefetch([[maybe_unused]] const void* address) noexcept {
#if defined(__GNUC__)
    __builtin_prefetch(address);
#endif
}

struct free_scratch {
    void operator()(void* block) const noexcept { ::operator delete(block); }
};

/// Memory of a call's own: plain numbers, or structs of them, on large pages where there are many.
template <class T>
using scratch = std::unique_ptr<T[], free_scratch>;

/// n elements, unset. Throws std::bad_alloc.
template <class T>
scratch<T> make_scratch(std::uint64_t n) {
    need(n < std::numeric_limits<std::int64_t>::max() / sizeof(T));
    void* const block = ::operator new(n * sizeof(T));
    prefer_large_pages(block, n * sizeof(T));
    return scratch<T>(static_cast<T*>(block));
}

/// n elements of value 0. Throws std::bad_alloc.
template <class T>
scratch<T> make_zero_scratch(std::uint64_t n) {
    scratch<T> zeros = make_scratch<T>(n);
    std::fill_n(zeros.get(), n, T{});
    return zeros;
}

/// A vector of n zeros that is soon filled as a whole. Throws std::bad_alloc.
template <class T>
dense1D<T> zeros_to_fill(std::uint64_t n) {
    dense2D<T> column;
    need(column.make_zeros(n, 1));
    prefer_large_pages(column.data(), n * sizeof(T));
    return column.as_vector();
}

} // namespace kvx::zelvo
