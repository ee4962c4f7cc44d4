#pragma once

#include <cstdint>
#include <functional>

#include <kvx/dense_array.h>

namespace kvx::zelvo {

/// Whether the half-open range [first, last) runs backwards. std::less orders pointers into
/// different arrays too, which `<` does not.
template <class T>
bool is_reversed(const T* first, const T* last) {
    return std::less<const T*>()(last, first);
}

/// Number of entries of all matrices of the range.
inline std::uint64_t entry_count(const dense2D<unsigned int>* first,
                                 const dense2D<unsigned int>* last) {
    std::uint64_t count = 0;
    for (; first != last; ++first)
        count += first->rows() * first->cols();
    return count;
}

} // namespace kvx::zelvo
