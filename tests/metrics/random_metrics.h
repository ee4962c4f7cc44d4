#pragma once

#include <cmath>
#include <random>

#include "meshes.h"

namespace kvx::zelvo::tests {

template <unsigned N>
using metric = symmetric_fixed<double, N>;

/// A matrix in general position with eigenvalues between scale and scale * 10^-decades, the ends
/// among them.
template <unsigned N>
metric<N> random_metric(std::mt19937& random, double decades, double scale) {
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    matrix_fixed<double, N, N> R;
    for (unsigned i = 0; i < N; ++i)
        R(i, i) = 1.0;
    for (unsigned p = 0; p < N; ++p) {
        for (unsigned q = 0; q < p; ++q) {
            const double angle = 6.3 * uniform(random);
            for (unsigned i = 0; i < N; ++i) {
                const double x = R(i, p), y = R(i, q);
                R(i, p) = std::cos(angle) * x - std::sin(angle) * y;
                R(i, q) = std::sin(angle) * x + std::cos(angle) * y;
            }
        }
    }
    metric<N> M;
    for (unsigned k = 0; k < N; ++k) {
        const double value = k < 2 ? k : uniform(random);
        for (unsigned j = 0; j < N; ++j)
            for (unsigned i = 0; i <= j; ++i)
                M(i, j) += R(i, k) * R(j, k) * std::pow(10.0, -decades * value) * scale;
    }
    return M;
}

template <unsigned N>
std::vector<double> list(const metric<N>& M) {
    return {M.data(), M.data() + metric<N>::packed_size};
}

/// u^T M v, in more digits and a larger range than the library has.
template <unsigned N, class U, class V>
long double form(const metric<N>& M, const U& u, const V& v) {
    long double sum = 0;
    for (unsigned j = 0; j < N; ++j)
        for (unsigned i = 0; i < N; ++i)
            sum += static_cast<long double>(M(i, j)) * u[i] * v[j];
    return sum;
}

} // namespace kvx::zelvo::tests
