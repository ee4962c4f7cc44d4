#include <kvx/zelvo/metric_combination.h>

#include "metrics/symmetric_eigen.h"

namespace kvx::zelvo {

namespace {

template <unsigned Dim>
void hand_out(const eigen_system<Dim>& pairs, vector_fixed<double, Dim>& values,
              matrix_fixed<double, Dim, Dim>& vectors) {
    for (unsigned k = 0; k < Dim; ++k) {
        values[k] = pairs.values[k];
        for (unsigned i = 0; i < Dim; ++i)
            vectors(i, k) = pairs.vectors[k][i];
    }
}

template <unsigned Dim>
bool pairs_of(const symmetric_fixed<double, Dim>& M, vector_fixed<double, Dim>& values,
              matrix_fixed<double, Dim, Dim>& vectors) {
    eigen_system<Dim> pairs;
    const bool found = decompose<Dim>(M.data(), pairs);
    hand_out(pairs, values, vectors);
    return found;
}

template <unsigned Dim>
bool pairs_of(const symmetric_fixed<double, Dim>& M1, const symmetric_fixed<double, Dim>& M2,
              vector_fixed<double, Dim>& values, matrix_fixed<double, Dim, Dim>& vectors) {
    eigen_system<Dim> pairs;
    const bool found = generalised_pairs<Dim>(M1.data(), M2.data(), pairs);
    hand_out(pairs, values, vectors);
    return found;
}

} // namespace

bool eigen_pairs(const symmetric_fixed<double, 2>& M, vector_fixed<double, 2>& values,
                 matrix_fixed<double, 2, 2>& vectors) noexcept {
    return pairs_of(M, values, vectors);
}

bool eigen_pairs(const symmetric_fixed<double, 3>& M, vector_fixed<double, 3>& values,
                 matrix_fixed<double, 3, 3>& vectors) noexcept {
    return pairs_of(M, values, vectors);
}

bool eigen_pairs(const symmetric_fixed<double, 2>& M1, const symmetric_fixed<double, 2>& M2,
                 vector_fixed<double, 2>& values, matrix_fixed<double, 2, 2>& vectors) noexcept {
    return pairs_of(M1, M2, values, vectors);
}

bool eigen_pairs(const symmetric_fixed<double, 3>& M1, const symmetric_fixed<double, 3>& M2,
                 vector_fixed<double, 3>& values, matrix_fixed<double, 3, 3>& vectors) noexcept {
    return pairs_of(M1, M2, values, vectors);
}

void minimum_metric(const symmetric_fixed<double, 2>& M1, const symmetric_fixed<double, 2>& M2,
                    symmetric_fixed<double, 2>& M) noexcept {
    intersect<2>(M1.data(), M2.data(), M.data());
}

void minimum_metric(const symmetric_fixed<double, 3>& M1, const symmetric_fixed<double, 3>& M2,
                    symmetric_fixed<double, 3>& M) noexcept {
    intersect<3>(M1.data(), M2.data(), M.data());
}

void maximum_metric(const symmetric_fixed<double, 2>& M1, const symmetric_fixed<double, 2>& M2,
                    symmetric_fixed<double, 2>& M) noexcept {
    unite<2>(M1.data(), M2.data(), M.data());
}

void maximum_metric(const symmetric_fixed<double, 3>& M1, const symmetric_fixed<double, 3>& M2,
                    symmetric_fixed<double, 3>& M) noexcept {
    unite<3>(M1.data(), M2.data(), M.data());
}

} // namespace kvx::zelvo
