#pragma once

#include <cstdint>
#include <initializer_list>
#include <ostream>
#include <vector>

#include <gmock/gmock.h>

#include <kvx/zelvo/zelvo.h>

/// Small arrays for tests, written as they are read: vec({1, 2}), columns({{0, 1, 2}, {2, 1, 3}}).
namespace kvx::zelvo::tests {

constexpr unsigned int none = no_node;

inline dense1D<unsigned int> vec(std::initializer_list<unsigned int> entries) {
    dense1D<unsigned int> v(entries.size());
    std::copy(entries.begin(), entries.end(), v.begin());
    return v;
}

/// A matrix from its columns, all of one length.
template <class T>
dense2D<T> matrix(const std::vector<std::vector<T>>& cols) {
    dense2D<T> m(cols.empty() ? 0 : cols.front().size(), cols.size());
    for (std::size_t j = 0; j < cols.size(); ++j)
        for (std::size_t i = 0; i < cols[j].size(); ++i)
            m(i, j) = cols[j][i];
    return m;
}
inline dense2D<unsigned int> columns(const std::vector<std::vector<unsigned int>>& cols) {
    return matrix(cols);
}
inline dense2D<double> points(const std::vector<std::vector<double>>& cols) {
    return matrix(cols);
}

/// The same matrix as a view with a stride and an offset into a larger one full of `filler`.
template <class T>
dense2D<T> strided(const dense2D<T>& m, T filler) {
    const dense2D<T> frame(m.rows() + 3, m.cols() + 2, filler);
    dense2D<T> view = frame.sub_matrix(1, 1, m.rows(), m.cols());
    for (std::uint64_t j = 0; j < m.cols(); ++j)
        for (std::uint64_t i = 0; i < m.rows(); ++i)
            view(i, j) = m(i, j);
    return view;
}

/// Entries for comparison and for messages.
template <class T>
std::vector<T> list(const dense1D<T>& v) {
    return std::vector<T>(v.begin(), v.end());
}
template <class T>
std::vector<std::vector<T>> list(const dense2D<T>& m) {
    std::vector<std::vector<T>> cols(m.cols());
    for (std::uint64_t j = 0; j < m.cols(); ++j)
        for (std::uint64_t i = 0; i < m.rows(); ++i)
            cols[j].push_back(m(i, j));
    return cols;
}

} // namespace kvx::zelvo::tests
