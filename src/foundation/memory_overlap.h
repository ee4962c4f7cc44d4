#pragma once

#include <functional>

#include <kvx/dense_array.h>

namespace kvx::zelvo {

/// The memory of an array from its first element to behind its last one. Tells overlap also for two
/// views of the caller's memory, which share no storage block.
template <class T>
struct memory_run {
    const T* begin = nullptr;
    const T* end = nullptr;

    explicit memory_run(const dense1D<T>& v)
        : begin(v.data())
        , end(v.data() + v.size()) {}
    explicit memory_run(const dense2D<T>& m)
        : begin(m.data())
        , end(begin) {
        if (!m.empty()) end += m.ld() * (m.cols() - 1) + m.rows();
    }
};

/// Whether two runs have an element in common; an empty run has none.
template <class T>
bool overlap(const memory_run<T>& a, const memory_run<T>& b) {
    const std::less<const T*> before; // orders pointers into different arrays too
    return a.begin != a.end && b.begin != b.end && before(a.begin, b.end) && before(b.begin, a.end);
}

} // namespace kvx::zelvo
