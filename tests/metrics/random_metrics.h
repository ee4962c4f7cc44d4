#pragma once

#include <cmath>

#include "random_meshes.h"

namespace kvx::zelvo::tests {

template <unsigned N>
using metric = symmetric_fixed<double, N>;
template <unsigned N>
using direction = vector_fixed<double, N>;

template <unsigned N>
std::vector<double> list(const metric<N>& M) {
    return {M.data(), M.data() + metric<N>::packed_size};
}

template <unsigned N>
direction<N> random_direction(engine& random) {
    direction<N> u;
    for (unsigned i = 0; i < N; ++i)
        u[i] = std::normal_distribution<double>()(random);
    return u;
}

/// A matrix in general position with eigenvalues between scale and scale * 10^-decades, roughly: a
/// sum of N squares of these sizes; for 0 decades scale times the identity.
template <unsigned N>
metric<N> random_metric(engine& random, double decades, double scale) {
    metric<N> M;
    for (unsigned k = 0; k < N; ++k) {
        direction<N> u = random_direction<N>(random);
        if (decades == 0)
            for (unsigned i = 0; i < N; ++i)
                u[i] = i == k;
        for (unsigned j = 0; j < N; ++j)
            for (unsigned i = 0; i <= j; ++i)
                M(i, j) += u[i] * u[j] * std::pow(10.0, -decades * k / (N - 1)) * scale;
    }
    return M;
}

/// u^T M v, in more digits and a larger range than the library has.
template <unsigned N>
long double form(const metric<N>& M, const direction<N>& u, const direction<N>& v) {
    long double sum = 0;
    for (unsigned j = 0; j < N; ++j)
        for (unsigned i = 0; i < N; ++i)
            sum += static_cast<long double>(M(i, j)) * u[i] * v[j];
    return sum;
}

} // namespace kvx::zelvo::tests
