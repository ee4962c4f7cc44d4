#pragma once

#include <algorithm>
#include <cstdint>

#include <kvx/dense_array.h>

#include "foundation/memory_guard.h"

namespace kvx::zelvo {

/// Appends to a vector element by element, doubling its capacity. What was pushed is in the vector
/// when the appender is gone, also when push threw std::bad_alloc.
template <class T>
class appender {
public:
    explicit appender(dense1D<T>& out) noexcept
        : out_(out)
        , begin_(out.size())
        , size_(begin_)
        , room_(begin_) {}
    appender(const appender&) = delete;
    appender& operator=(const appender&) = delete;
    ~appender() { out_.resize(size_); }

    void push(T value) {
        if (size_ == room_) make_room(1);
        data_[size_++] = value;
    }
    /// Room for n more elements. The vector is made longer by no more than was pushed, so that
    /// appending little to a long vector costs little.
    void make_room(std::uint64_t n) {
        if (n <= room_ - size_) return;
        constexpr std::uint64_t first_room = 16;
        const std::uint64_t wanted = size_ + std::max({n, size_ - begin_, first_room});
        if (wanted > out_.capacity()) need(out_.reserve(std::max(wanted, 2 * size_)));
        need(out_.resize(wanted));
        room_ = wanted;
        data_ = out_.data();
    }

private:
    dense1D<T>& out_;
    T* data_ = nullptr;
    std::uint64_t begin_;
    std::uint64_t size_;
    std::uint64_t room_;
};

/// Appends k columns of value v to a matrix and gives it at least `rows` rows, growing as matrices
/// of nodes and elements do: at least twofold, and at least 4 columns of 2 rows or 8 of 3. Throws
/// std::bad_alloc with the matrix unchanged.
template <class T>
void append_columns(dense2D<T>& m, std::uint64_t rows, std::uint64_t k, T v) {
    const std::uint64_t new_rows = std::max(rows, m.rows());
    const std::uint64_t minimum = new_rows == 2 ? 4 : 8;
    if (m.empty() || m.cols() + k > m.col_capacity())
        need(m.reserve(new_rows, std::max(m.cols() + std::max(m.cols(), k), minimum)));
    need(m.resize(new_rows, m.cols() + k, v));
}

} // namespace kvx::zelvo
