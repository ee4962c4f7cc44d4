#pragma once

#include <array>
#include <concepts>
#include <cstddef>

namespace kvx {

/// N numbers in a row; the numbers start at 0.
template <class T, unsigned N>
class vector_fixed {
public:
    constexpr vector_fixed() = default;
    /// All N entries equal to v.
    constexpr explicit vector_fixed(T v) noexcept { entries_.fill(v); }
    /// The N entries in order. Exactly N numbers, so that {x, y} is 2-D and {x, y, z} 3-D.
    template <std::convertible_to<T>... Numbers>
    requires(N > 1 && sizeof...(Numbers) == N) constexpr vector_fixed(Numbers... numbers) noexcept
        : entries_{static_cast<T>(numbers)...} {}

    /// Sets all N entries to v.
    constexpr vector_fixed& operator=(T v) noexcept {
        entries_.fill(v);
        return *this;
    }

    static constexpr unsigned size() noexcept { return N; }
    constexpr T& operator[](std::size_t i) noexcept { return entries_[i]; }
    constexpr const T& operator[](std::size_t i) const noexcept { return entries_[i]; }
    constexpr T* data() noexcept { return entries_.data(); }
    constexpr const T* data() const noexcept { return entries_.data(); }

private:
    std::array<T, N> entries_{};
};

/// Symmetric N x N matrix stored as its upper triangle by columns: (0,0), (0,1), (1,1), (0,2),
/// (1,2), (2,2).
template <class T, unsigned N>
class symmetric_fixed {
public:
    static constexpr unsigned packed_size = N * (N + 1) / 2;

    constexpr symmetric_fixed() = default;
    constexpr explicit symmetric_fixed(T v) noexcept { packed_.fill(v); }
    /// The packed entries in order.
    template <std::convertible_to<T>... Numbers>
    requires(N > 1 && sizeof...(Numbers) ==
                          packed_size) constexpr symmetric_fixed(Numbers... numbers) noexcept
        : packed_{static_cast<T>(numbers)...} {}

    /// Sets all entries to v.
    constexpr symmetric_fixed& operator=(T v) noexcept {
        packed_.fill(v);
        return *this;
    }

    constexpr T& operator()(std::size_t i, std::size_t j) noexcept { return packed_[place(i, j)]; }
    constexpr const T& operator()(std::size_t i, std::size_t j) const noexcept {
        return packed_[place(i, j)];
    }
    constexpr T* data() noexcept { return packed_.data(); }
    constexpr const T* data() const noexcept { return packed_.data(); }

private:
    static constexpr std::size_t place(std::size_t i, std::size_t j) noexcept {
        return i <= j ? i + j * (j + 1) / 2 : j + i * (i + 1) / 2;
    }

    std::array<T, packed_size> packed_{};
};

/// Small dense M x N matrix, column-major.
template <class T, unsigned M, unsigned N>
class matrix_fixed {
public:
    constexpr matrix_fixed() = default;
    constexpr explicit matrix_fixed(T v) noexcept { entries_.fill(v); }

    /// Sets all entries to v.
    constexpr matrix_fixed& operator=(T v) noexcept {
        entries_.fill(v);
        return *this;
    }

    static constexpr unsigned rows() noexcept { return M; }
    static constexpr unsigned cols() noexcept { return N; }
    constexpr T& operator()(std::size_t i, std::size_t j) noexcept { return entries_[i + j * M]; }
    constexpr const T& operator()(std::size_t i, std::size_t j) const noexcept {
        return entries_[i + j * M];
    }
    constexpr T* data() noexcept { return entries_.data(); }
    constexpr const T* data() const noexcept { return entries_.data(); }

private:
    std::array<T, M * N> entries_{};
};

} // namespace kvx
