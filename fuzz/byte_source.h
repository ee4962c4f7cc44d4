#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <tuple>
#include <vector>

#include <kvx/zelvo/zelvo.h>

/// Turns the bytes of a fuzzer into arguments: small meshes of every kind and shape, mostly sound, a
/// few entries hostile.
namespace kvx::zelvo::fuzzing {

/// Gives zeros when the bytes are used up.
class byte_source {
public:
    byte_source(const std::uint8_t* data, std::size_t size)
        : at_(data)
        , left_(size) {}
    /// The same entries, but every array has storage of its own.
    byte_source without_views() const {
        byte_source source(at_, left_);
        source.views_ = false;
        return source;
    }

    bool empty() const { return left_ == 0; }

    template <class T>
    T take() {
        T value{};
        const std::size_t bytes = std::min(sizeof value, left_);
        if (bytes > 0) std::memcpy(&value, at_, bytes);
        at_ += bytes;
        left_ -= bytes;
        return value;
    }
    unsigned int byte() { return take<std::uint8_t>(); }
    /// A number below n, at most 256; 0 for n = 0.
    unsigned int below(std::uint64_t n) { return n > 0 ? byte() % static_cast<unsigned>(n) : 0; }
    bool one_in(unsigned int n) { return below(n) == n - 1; }
    template <class T>
    T one_of(std::initializer_list<T> choices) {
        return choices.begin()[below(choices.size())];
    }

    /// Any of the kinds and a few values that are none.
    element_type kind() { return static_cast<element_type>(static_cast<int>(below(24)) - 1); }

    /// Mostly on a small lattice, where nodes and distances coincide.
    double number() {
        const unsigned int b = byte();
        if (b < 192) return (static_cast<int>(b % 16) - 4) * 0.25;
        if (b < 224) return take<std::int16_t>() * 1e-3;
        if (b < 240) return take<double>();
        constexpr double infinite = std::numeric_limits<double>::infinity();
        return one_of({std::nan(""), infinite, -infinite, -0.0, 1e308, -1e308, 5e-324, 1e-300, 1e-8,
                       1e30, 0.1, 1e150});
    }

    /// An index of n things: one in 16 is no_node, one in 64 stray.
    unsigned int index(std::uint64_t n) {
        const unsigned int b = byte();
        if (b < 16) return no_node;
        if (b < 20)
            return one_of({static_cast<unsigned int>(n), 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu});
        return n > 0 ? b % static_cast<unsigned int>(n) : 0;
    }

    /// Mostly n, seldom another number.
    std::uint64_t about(std::uint64_t n) { return one_in(16) ? below(25) : n; }

    /// A list of n entries, every second one a view into the middle of a larger list.
    template <class Make>
    auto list(std::uint64_t n, Make&& make) {
        using T = decltype(make());
        const bool view = byte() % 2 != 0 && views_;
        dense1D<T> v;
        if (view) {
            frames<dense1D<T>>().emplace_back(n + 4, beyond<T>);
            v = frames<dense1D<T>>().back().sub_vector(2, n);
        } else {
            v = dense1D<T>(n);
        }
        for (T& entry : v)
            entry = make();
        return v;
    }

    /// A matrix filled by columns, every second one a view with a stride and an offset.
    template <class Make>
    auto matrix(std::uint64_t rows, std::uint64_t cols, Make&& make) {
        using T = decltype(make());
        const bool view = byte() % 2 != 0 && views_;
        dense2D<T> m;
        if (view) {
            frames<dense2D<T>>().emplace_back(rows + 3, cols + 2, beyond<T>);
            m = frames<dense2D<T>>().back().sub_matrix(1, 1, rows, cols);
        } else {
            m = dense2D<T>(rows, cols);
        }
        for (std::uint64_t j = 0; j < cols; ++j)
            for (std::uint64_t i = 0; i < rows; ++i)
                m(i, j) = make();
        return m;
    }

    /// Whether nobody wrote to the larger arrays around the views.
    bool frames_are_whole() const {
        return std::apply([](const auto&... kept) { return (whole(kept) && ...); }, frames_);
    }

    /// Coordinates of up to 24 nodes: 2 or 3 rows, seldom another number, none included.
    dense2D<double> nodes() {
        const std::uint64_t rows = one_of({3u, 3u, 3u, 3u, 2u, 2u, 2u, 2u, 0u, 1u, 4u});
        return matrix(rows, below(25), [this] { return number(); });
    }

    /// Up to 24 elements with the rows of their kind, seldom other rows; in every second matrix no
    /// index is stray. Mixed kinds are padded.
    dense2D<unsigned int> elements(element_type kind, std::uint64_t node_count) {
        const bool mixed = kind == ET_FACE_MIX || kind == ET_SOLID_MIX;
        const bool sound = node_count > 0 && byte() % 2 == 0;
        const std::uint64_t of_kind = mixed                   ? (kind == ET_FACE_MIX ? 4 : 8)
                                      : is_element_type(kind) ? kvx::node_count(kind)
                                                              : 3;
        const std::uint64_t rows = one_in(16) ? below(10) : of_kind;
        dense2D<unsigned int> m =
            matrix(rows, below(25), [&] { return sound ? below(node_count) : index(node_count); });
        for (std::uint64_t j = 0; mixed && j < m.cols(); ++j)
            for (std::uint64_t i = kind == ET_FACE_MIX ? 3 + below(2)
                                                       : one_of<std::uint64_t>({4, 5, 6, 8});
                 i < rows; ++i)
                m(i, j) = no_node;
        return m;
    }

private:
    /// What the larger arrays hold around the views.
    template <class T>
    static constexpr T beyond = static_cast<T>(77);

    template <class Array>
    std::vector<Array>& frames() {
        return std::get<std::vector<Array>>(frames_);
    }
    template <class T>
    static bool whole(const std::vector<dense1D<T>>& kept) {
        for (const dense1D<T>& v : kept)
            for (const std::uint64_t i :
                 {std::uint64_t{0}, std::uint64_t{1}, v.size() - 2, v.size() - 1})
                if (v[i] != beyond<T>) return false;
        return true;
    }
    template <class T>
    static bool whole(const std::vector<dense2D<T>>& kept) {
        for (const dense2D<T>& m : kept)
            for (std::uint64_t j = 0; j < m.cols(); ++j)
                for (std::uint64_t i = 0; i < m.rows(); ++i) {
                    const bool inside = i >= 1 && i < m.rows() - 2 && j >= 1 && j < m.cols() - 1;
                    if (!inside && m(i, j) != beyond<T>) return false;
                }
        return true;
    }

    const std::uint8_t* at_;
    std::size_t left_;
    bool views_ = true;
    std::tuple<std::vector<dense1D<double>>, std::vector<dense2D<double>>,
               std::vector<dense1D<unsigned int>>, std::vector<dense2D<unsigned int>>,
               std::vector<dense1D<int>>>
        frames_;
};

} // namespace kvx::zelvo::fuzzing
