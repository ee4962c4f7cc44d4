#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "metrics/shape_formulas.h"

/// Ratings of many elements of one shape at a time. Their coordinates are gathered corner by corner
/// and axis by axis, elements side by side, and rated by the branchless formulas in one loop, which
/// the compiler turns into vector instructions; what those leave undecided goes the plain way. The
/// numbers come out the same whatever the width of the registers.
namespace kvx::zelvo {

#if defined(__x86_64__)
#define KVX_ZELVO_AVX2 [[gnu::target("avx2")]]
inline bool has_avx2() {
    return __builtin_cpu_supports("avx2") != 0;
}
#else
#define KVX_ZELVO_AVX2
inline bool has_avx2() {
    return false;
}
#endif

// Sanitizers take minutes over functions of that length.
#if defined(__OPTIMIZE__) && !defined(__SANITIZE_ADDRESS__)
#define KVX_ZELVO_FLATTEN [[gnu::flatten]]
#else
#define KVX_ZELVO_FLATTEN
#endif

template <std::size_t Dim, shape S>
class shape_block {
public:
    static constexpr std::uint64_t capacity = 64;

    /// `wide` where the machine has AVX2.
    explicit shape_block(bool wide)
        : wide_(wide) {}

    /// Takes an element of nodes at pos[axis + node * ld], whose rating becomes `value` now or when
    /// the block is finished.
    void add(const double* pos, std::uint64_t ld, const unsigned int* nodes, double& value) {
        gather<1>(count_, pos, ld, nodes, 0);
        values_[count_++] = &value;
        if (count_ == capacity) finish();
    }

    /// Rates what was added since it was last done.
    void finish() {
        double ratings[capacity];
        rate_gathered(ratings);
        for (std::uint64_t j = 0; j < count_; ++j)
            *values_[j] = ratings[j];
        count_ = 0;
    }

    /// Rates n elements, whose nodes lie `stride` apart, with nothing added before.
    void rate_run(const double* pos, std::uint64_t ld, const unsigned int* nodes,
                  std::uint64_t stride, std::uint64_t n, double* values) {
        for (std::uint64_t start = 0; start < n; start += count_) {
            count_ = std::min(capacity, n - start);
            std::uint64_t j = 0;
            for (; j + 2 <= count_; j += 2, nodes += 2 * stride)
                gather<2>(j, pos, ld, nodes, stride);
            if (j < count_) gather<1>(j, pos, ld, nodes, stride);
            rate_gathered(values + start);
        }
        count_ = 0;
    }

private:
    static constexpr std::size_t corner_count = topology_of(S).corner_count;

    /// Gathers Count elements into the places from j on; two are stored faster at once.
    template <unsigned Count>
    void gather(std::uint64_t j, const double* pos, std::uint64_t ld, const unsigned int* nodes,
                std::uint64_t stride) {
        for (unsigned i = 0; i < corner_count; ++i) {
            for (unsigned axis = 0; axis < Dim; ++axis) {
                double x[Count];
                for (unsigned k = 0; k < Count; ++k)
                    x[k] = pos[axis + nodes[k * stride + i] * ld];
                std::copy_n(x, Count, &p_[axis][i][j]);
            }
        }
    }

    /// Rates the elements gathered, and those that the quick formula leaves the plain way.
    void rate_gathered(double* ratings) const {
        if (wide_) {
            rate_wide(ratings);
        } else {
            rate(ratings);
        }
        for (std::uint64_t j = 0; j < count_; ++j) {
            if (ratings[j] == shape_formulas::undecided)
                ratings[j] = shape_formulas::rating<S>(element(j));
        }
    }

    shape_formulas::corners<Dim, corner_count> element(std::uint64_t j) const {
        shape_formulas::corners<Dim, corner_count> p;
        for (unsigned axis = 0; axis < Dim; ++axis) {
            for (unsigned i = 0; i < corner_count; ++i)
                p[axis][i] = p_[axis][i][j];
        }
        return p;
    }

    KVX_ZELVO_FLATTEN void rate(double* __restrict ratings) const {
        for (std::uint64_t j = 0; j < count_; ++j)
            ratings[j] = shape_formulas::quick_rating<S>(element(j));
    }
    KVX_ZELVO_AVX2 KVX_ZELVO_FLATTEN void rate_wide(double* __restrict ratings) const {
        for (std::uint64_t j = 0; j < count_; ++j)
            ratings[j] = shape_formulas::quick_rating<S>(element(j));
    }

    bool wide_;
    std::uint64_t count_ = 0;
    std::array<std::array<std::array<double, capacity>, corner_count>, Dim> p_;
    std::array<double*, capacity> values_;
};

#undef KVX_ZELVO_AVX2
#undef KVX_ZELVO_FLATTEN

} // namespace kvx::zelvo
