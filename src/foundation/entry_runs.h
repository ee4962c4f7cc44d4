#pragma once

#include <algorithm>
#include <cstdint>

#include <kvx/dense_array.h>

namespace kvx::zelvo {

/// Calls visit(first, last) for every run of entries that lie side by side, from the first column
/// to the last, until it answers false; whether it never did.
template <class T, class Visit>
bool every_run(const dense1D<T>& v, Visit&& visit) {
    return visit(v.begin(), v.end());
}
template <class T, class Visit>
bool every_run(const dense2D<T>& m, Visit&& visit) {
    if (m.empty()) return true; // of however many columns
    const T* const first = m.data();
    if (m.ld() == m.rows()) return visit(first, first + m.rows() * m.cols());
    for (std::uint64_t j = 0; j < m.cols(); ++j) {
        if (!visit(first + j * m.ld(), first + j * m.ld() + m.rows())) return false;
    }
    return true;
}

/// The largest of all entries + shift, which wrap around; 0 where there are none.
template <class Array>
unsigned int largest_shifted(const Array& a, unsigned int shift) {
    unsigned int largest = 0;
    every_run(a, [&largest, shift](const unsigned int* first, const unsigned int* last) {
        unsigned int of_run = 0; // a variable of its own, so that several are compared at once
        for (; first != last; ++first)
            of_run = std::max(of_run, *first + shift);
        largest = std::max(largest, of_run);
        return true;
    });
    return largest;
}

} // namespace kvx::zelvo
