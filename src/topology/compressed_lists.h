#pragma once

#include <cstdint>
#include <limits>
#include <new>

namespace kvx::zelvo {

/// A running total of list entries as an offset; throws std::bad_alloc when 32 bits do not hold it.
inline unsigned int list_offset(std::uint64_t total) {
    if (total > std::numeric_limits<unsigned int>::max()) throw std::bad_alloc();
    return static_cast<unsigned int>(total);
}

} // namespace kvx::zelvo
